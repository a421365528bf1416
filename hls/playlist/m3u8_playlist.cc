#include "hls/playlist/m3u8_playlist.h"

#include <array>
#include <limits>
#include <utility>

#include "hls/playlist/m3u8_text.h"

namespace stream {
namespace {

bool IsAbsolute(std::string_view line) {
  return line.starts_with("http://") || line.starts_with("https://");
}

// Scheme and host: the part before the first slash after the scheme, or all of `url` if there is
// none.
std::string_view HostPart(std::string_view url) {
  constexpr std::string_view kLongestScheme = "https://";
  return url.substr(0, url.find('/', kLongestScheme.size()));
}

// The part up to and including the last slash, even if that slash is in the query.
// Kept for compatibility.
std::string_view FolderPart(std::string_view url) { return url.substr(0, url.rfind('/') + 1); }

// The state of one call, shared by the line handlers.
struct ParseState {
  M3u8Header& header;
  std::string_view playlist_url;
  std::int64_t& media_sequence;
  M3u8Table& entries;
  M3u8Entry working{};                // copied into the table for each URI
  float duration = 0;                 // from "#EXTINF:", for the next URI
  bool is_segment_announced = false;  // set even if the duration is 0
  std::int32_t segment_index = 0;
  std::int64_t next_number = kNoSequenceNumber;
  std::size_t bytes_left = kMaxResolvedBytes;  // for further URIs
};

void OnSegmentInfo(ParseState& state, std::string_view value) {
  state.is_segment_announced = true;
  // If the value does not begin with a number, `duration` keeps its value and is added to the total
  // again. Kept for compatibility.
  ScanFloat(value, state.duration);
  state.header.totalDuration += state.duration;
}

// Parses "%dx%d". The width is stored even if the height is missing.
void ScanResolution(std::string_view value, M3u8Entry& entry) {
  if (!ScanInt32(value, entry.width) || !value.starts_with('x')) return;
  value.remove_prefix(1);
  ScanInt32(value, entry.height);
}

void OnVariantInfo(ParseState& state, std::string_view value) {
  state.header.streamInfPending = true;
  std::array<WantedAttribute, 3> wanted = {{{"PROGRAM-ID"}, {"BANDWIDTH"}, {"RESOLUTION"}}};
  FindAttributes(value, ",", "=", wanted);
  const auto& [program_id, bandwidth, resolution] = wanted;
  state.working.programId = ToInt32(program_id.value.value_or(""));
  state.working.bandwidth = ToInt32(bandwidth.value.value_or(""));
  ScanResolution(resolution.value.value_or(""), state.working);
}

void OnHeader(ParseState& state, std::string_view /*value*/) { state.header.hasHeader = true; }

// ":YES" is accepted anywhere in the line. Kept for compatibility. The tag's own colon is not part
// of `value`, so "YES" at its start is checked separately.
void OnAllowCache(ParseState& state, std::string_view value) {
  state.header.allowCache =
      value.starts_with("YES") || value.find(":YES") != std::string_view::npos;
}

void OnVersion(ParseState& state, std::string_view value) {
  ScanInt32(value, state.header.version);
}

void OnTargetDuration(ParseState& state, std::string_view value) {
  ScanInt32(value, state.header.targetDuration);
}

void OnMediaSequence(ParseState& state, std::string_view value) {
  if (ScanInt64(value, state.media_sequence)) state.next_number = state.media_sequence;
}

void OnEndList(ParseState& state, std::string_view /*value*/) { state.header.isLive = false; }

struct Tag {
  std::string_view name;
  bool is_whole_line;
  void (*handle)(ParseState& state,
                 std::string_view value);  // `value` follows the name in the line

  bool Fits(std::string_view line) const {
    return is_whole_line ? line == name : line.starts_with(name);
  }
};

// The first tag that matches a line handles it.
constexpr Tag kTags[] = {
    Tag{"#EXTINF:", false, OnSegmentInfo},
    Tag{"#EXT-X-STREAM-INF:", false, OnVariantInfo},
    Tag{"#EXTM3U", true, OnHeader},
    Tag{"#EXT-X-ALLOW-CACHE:", false, OnAllowCache},
    Tag{"#EXT-X-VERSION:", false, OnVersion},
    Tag{"#EXT-X-TARGETDURATION:", false, OnTargetDuration},
    Tag{"#EXT-X-MEDIA-SEQUENCE:", false, OnMediaSequence},
    Tag{"#EXT-X-ENDLIST", false, OnEndList},
};

void OnTagLine(ParseState& state, std::string_view line) {
  state.header.streamInfPending = false;
  for (const Tag& tag : kTags) {
    if (!tag.Fits(line)) continue;
    tag.handle(state, line.substr(tag.name.size()));
    return;
  }
}

// Returns the sequence number of the next segment and advances the counter. Segments after the
// largest possible number have none.
std::int64_t NextNumber(ParseState& state) {
  const std::int64_t number = state.next_number;
  const bool is_last = number == std::numeric_limits<std::int64_t>::max();
  if (is_last || number == kNoSequenceNumber) {
    state.next_number = kNoSequenceNumber;
  } else {
    ++state.next_number;
  }
  return number;
}

// A segment of duration 0 is dropped, but it uses up a sequence number.
void CountDroppedSegment(ParseState& state, std::string_view line) {
  if (line.starts_with('#') || !std::exchange(state.is_segment_announced, false)) return;
  NextNumber(state);
}

// A line is a URI only if a tag announces it: as a variant, or as a segment whose duration is not
// 0. So a segment of duration 0 is dropped. Kept for compatibility.
bool IsAddress(const ParseState& state, std::string_view line) {
  const bool announced = state.header.streamInfPending || state.duration != 0.0F;
  return announced && !line.starts_with('#');
}

// Reserves space for a URI. After the first URI that does not fit, shorter ones are rejected too: a
// playlist that ends early can be played, a playlist with gaps cannot.
bool ReserveBytes(ParseState& state, std::string_view uri) {
  const bool fits = uri.size() <= state.bytes_left;
  state.bytes_left = fits ? state.bytes_left - uri.size() : 0;
  return fits;
}

// "#EXT-X-STREAM-INF:" stays in effect until the next tag line. Kept for compatibility. All URIs up
// to that line have the same key, so the table keeps only the first.
void OnAddress(ParseState& state, std::string_view line) {
  state.working.duration = std::exchange(state.duration, 0.0F);
  state.is_segment_announced = false;
  state.working.number = state.header.streamInfPending ? kNoSequenceNumber : NextNumber(state);
  if (state.bytes_left == 0) return;  // before resolving, which takes time too
  state.working.uri = ResolveM3u8Uri(state.playlist_url, line);
  if (!ReserveBytes(state, state.working.uri)) return;
  const std::int32_t key =
      state.header.streamInfPending ? state.working.bandwidth : state.segment_index++;
  state.entries.try_emplace(state.entries.end(), key, state.working);
}

void OnLine(ParseState& state, std::string_view line) {
  constexpr std::size_t kShortest = 2;
  TrimChars(line, kM3u8Blanks);
  if (line.size() < kShortest) return;
  if (IsAddress(state, line)) {
    OnAddress(state, line);
  } else {
    CountDroppedSegment(state, line);
    OnTagLine(state, line);
  }
}

}  // namespace

bool ParseM3u8(M3u8Header& header, std::string_view baseUrl, std::string_view text,
               std::int64_t& mediaSequence, M3u8Table& entries) {
  header.isLive = true;
  header.totalDuration = 0;
  header.streamInfPending = false;
  ParseState state{header, baseUrl, mediaSequence, entries};
  ForEachPiece(text, "\n", [&state](std::string_view line) { OnLine(state, line); });
  return header.hasHeader;
}

std::string ResolveM3u8Uri(std::string_view playlist_url, std::string_view line) {
  if (IsAbsolute(line)) return std::string(line);
  const std::string_view front =
      line.starts_with('/') ? HostPart(playlist_url) : FolderPart(playlist_url);
  std::string uri;
  uri.reserve(front.size() + line.size());
  uri.append(front).append(line);
  return uri;
}

}  // namespace stream
