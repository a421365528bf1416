#include "hls/m3u8_playlist.h"

#include <array>
#include <limits>
#include <utility>

#include "hls/m3u8_attributes.h"
#include "hls/m3u8_scan.h"
#include "hls/m3u8_text.h"
#include "hls/m3u8_uri.h"

namespace {

// The state of one call, shared by the line handlers.
struct Pass {
  M3u8Header& header;
  std::string_view base_url;
  std::int64_t& media_sequence;
  M3u8Table& entries;
  M3u8Entry working{};                // copied into the table for each URI
  float duration = 0;                 // from "#EXTINF:", for the next URI
  bool is_segment_announced = false;  // set even if the duration is 0
  std::int32_t segment_index = 0;
  std::int64_t next_number = kNoSequenceNumber;
  std::size_t room = kMaxResolvedBytes;  // bytes left for further URIs
};

void OnSegmentInfo(Pass& pass, std::string_view value) {
  pass.is_segment_announced = true;
  // If the value does not begin with a number, `duration` keeps its value and is added to the total
  // again. Kept for compatibility.
  ScanFloat(value, pass.duration);
  pass.header.totalDuration += pass.duration;
}

// Parses "%dx%d". The width is stored even if the height is missing.
void ScanResolution(std::string_view value, M3u8Entry& entry) {
  if (!ScanInt32(value, entry.width) || !value.starts_with('x')) return;
  value.remove_prefix(1);
  ScanInt32(value, entry.height);
}

void OnVariantInfo(Pass& pass, std::string_view value) {
  pass.header.streamInfPending = true;
  std::array<WantedAttribute, 3> wanted = {{{"PROGRAM-ID"}, {"BANDWIDTH"}, {"RESOLUTION"}}};
  FindAttributes(value, ",", "=", wanted);
  const auto& [program_id, bandwidth, resolution] = wanted;
  pass.working.programId = ToInt32(program_id.value.value_or(""));
  pass.working.bandwidth = ToInt32(bandwidth.value.value_or(""));
  ScanResolution(resolution.value.value_or(""), pass.working);
}

void OnHeader(Pass& pass, std::string_view /*value*/) { pass.header.hasHeader = true; }

// ":YES" is accepted anywhere in the line. Kept for compatibility. The tag's own colon is not part
// of `value`, so "YES" at its start is checked separately.
void OnAllowCache(Pass& pass, std::string_view value) {
  pass.header.allowCache = value.starts_with("YES") || value.find(":YES") != std::string_view::npos;
}

void OnVersion(Pass& pass, std::string_view value) { ScanInt32(value, pass.header.version); }

void OnTargetDuration(Pass& pass, std::string_view value) {
  ScanInt32(value, pass.header.targetDuration);
}

void OnMediaSequence(Pass& pass, std::string_view value) {
  if (ScanInt64(value, pass.media_sequence)) pass.next_number = pass.media_sequence;
}

void OnEndList(Pass& pass, std::string_view /*value*/) { pass.header.isLive = false; }

struct Tag {
  std::string_view name;
  bool is_whole_line;
  void (*handle)(Pass& pass, std::string_view value);  // `value` follows the name in the line

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

void OnTagLine(Pass& pass, std::string_view line) {
  pass.header.streamInfPending = false;
  for (const Tag& tag : kTags) {
    if (!tag.Fits(line)) continue;
    tag.handle(pass, line.substr(tag.name.size()));
    return;
  }
}

// Returns the sequence number of the next segment and advances the counter. Segments after the
// largest possible number have none.
std::int64_t NextNumber(Pass& pass) {
  const std::int64_t number = pass.next_number;
  const bool is_last = number == std::numeric_limits<std::int64_t>::max();
  if (is_last || number == kNoSequenceNumber) {
    pass.next_number = kNoSequenceNumber;
  } else {
    ++pass.next_number;
  }
  return number;
}

// A segment of duration 0 is dropped, but it uses up a sequence number.
void CountDroppedSegment(Pass& pass, std::string_view line) {
  if (line.starts_with('#') || !std::exchange(pass.is_segment_announced, false)) return;
  NextNumber(pass);
}

// A line is a URI only if a tag announces it: as a variant, or as a segment whose duration is not
// 0. So a segment of duration 0 is dropped. Kept for compatibility.
bool IsAddress(const Pass& pass, std::string_view line) {
  const bool announced = pass.header.streamInfPending || pass.duration != 0.0F;
  return announced && !line.starts_with('#');
}

// Reserves space for a URI. After the first URI that does not fit, shorter ones are rejected too: a
// playlist that ends early can be played, a playlist with gaps cannot.
bool TakeRoom(Pass& pass, std::string_view uri) {
  const bool fits = uri.size() <= pass.room;
  pass.room = fits ? pass.room - uri.size() : 0;
  return fits;
}

// "#EXT-X-STREAM-INF:" stays in effect until the next tag line. Kept for compatibility. All URIs up
// to that line have the same key, so the table keeps only the first.
void OnAddress(Pass& pass, std::string_view line) {
  pass.working.duration = std::exchange(pass.duration, 0.0F);
  pass.is_segment_announced = false;
  pass.working.number = pass.header.streamInfPending ? kNoSequenceNumber : NextNumber(pass);
  if (pass.room == 0) return;  // before resolving, which takes time too
  pass.working.uri = ResolveM3u8Uri(pass.base_url, line);
  if (!TakeRoom(pass, pass.working.uri)) return;
  const std::int32_t key =
      pass.header.streamInfPending ? pass.working.bandwidth : pass.segment_index++;
  pass.entries.try_emplace(pass.entries.end(), key, pass.working);
}

void OnLine(Pass& pass, std::string_view raw) {
  constexpr std::size_t kShortest = 2;
  const std::string_view line = Trimmed(raw, kM3u8Blanks);
  if (line.size() < kShortest) return;
  if (IsAddress(pass, line)) {
    OnAddress(pass, line);
  } else {
    CountDroppedSegment(pass, line);
    OnTagLine(pass, line);
  }
}

}  // namespace

bool ParseM3u8(M3u8Header& header, std::string_view baseUrl, std::string_view text,
               std::int64_t& mediaSequence, M3u8Table& entries) {
  header.isLive = true;
  header.totalDuration = 0;
  header.streamInfPending = false;
  Pass pass{header, baseUrl, mediaSequence, entries};
  ForEachPiece(text, "\n", [&pass](std::string_view line) { OnLine(pass, line); });
  return header.hasHeader;
}
