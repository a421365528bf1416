// The M3U8 parser: parses the text of a media or master playlist into a header and a table of URIs.
// A pure function over strings: it fetches nothing, prints nothing and keeps no state between
// calls. Durations are in seconds.
//
// It never rejects a text: fields that the text does not set keep their values, and unknown lines
// are skipped. The caller must expect any number in the result, since durations are used as they
// are in the text: they may be negative, infinite or NaN.
#ifndef HLS_PLAYLIST_M3U8_PLAYLIST_H_
#define HLS_PLAYLIST_M3U8_PLAYLIST_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <string_view>

namespace stream {

// If a header is reused for a second text, it keeps the fields that this text does not set. Only
// isLive, totalDuration and streamInfPending are reset.
struct M3u8Header {
  bool hasHeader = false;  // a line "#EXTM3U" was found
  bool allowCache = false;
  bool isLive = true;  // no line that starts with "#EXT-X-ENDLIST" was found
  std::int32_t version = 0;
  std::int32_t targetDuration = 0;
  float totalDuration = 0;        // sum over all "#EXTINF:" lines
  bool streamInfPending = false;  // the last tag line was "#EXT-X-STREAM-INF:"
};

// The number of a segment without a media sequence number: no "#EXT-X-MEDIA-SEQUENCE:" precedes it.
inline constexpr std::int64_t kNoSequenceNumber = std::numeric_limits<std::int64_t>::min();

// A segment or a variant playlist. A segment has the values of the last variant before it in the
// same text. Kept for compatibility.
struct M3u8Entry {
  std::string uri;             // resolved
  float duration = 0;          // segments only
  std::int32_t programId = 0;  // variants only, as all fields up to `height`
  std::int32_t bandwidth = 0;  // bits per second
  std::int32_t width = 0;      // pixels
  std::int32_t height = 0;

  // Segments only: the last "#EXT-X-MEDIA-SEQUENCE:" before it plus the number of segments in
  // between, dropped ones included. So a segment keeps its number while the window moves on.
  std::int64_t number = kNoSequenceNumber;
};

// Segments by their index in the text, from 0. Variants by their bandwidth, so the slowest is
// first. An existing entry is never replaced.
using M3u8Table = std::map<std::int32_t, M3u8Entry>;

// Limit for the total size of the resolved URIs of one text. A line of two characters becomes as
// long as the address of its playlist, so a text of megabytes could fill the memory. A playlist of
// one day in segments of one second needs a tenth of this.
inline constexpr std::size_t kMaxResolvedBytes = std::size_t{256} << 20;

// Parses `text`, resolves its URIs against `baseUrl` and adds them to `entries`. Writes
// `mediaSequence` only if the text contains one. Returns `header.hasHeader`; if it is false, the
// results are stored all the same.
//
// A segment whose duration is 0 is dropped. Kept for compatibility. Numbers that are out of range
// are clamped. URIs beyond kMaxResolvedBytes are dropped; those before them are kept.
bool ParseM3u8(M3u8Header& header, std::string_view baseUrl, std::string_view text,
               std::int64_t& mediaSequence, M3u8Table& entries);

// Resolves `line`, a URI in the playlist at `playlist_url`. It only concatenates text: "." and ".."
// stay, and so do errors in either address.
std::string ResolveM3u8Uri(std::string_view playlist_url, std::string_view line);

}  // namespace stream

#endif  // HLS_PLAYLIST_M3U8_PLAYLIST_H_
