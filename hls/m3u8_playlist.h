// The M3U8 parser: the text of a media or master playlist into a header and a table of addresses. A
// pure function over strings: it fetches nothing, prints nothing and keeps nothing between calls.
// Durations are in seconds.
//
// It never fails outright: what a text does not say stays as it was, and lines that mean nothing
// are passed over. Whoever calls it must expect any number in what comes out, since durations come
// from the text as they stand: negative ones, infinities and NaN too.
#ifndef HLS_M3U8_PLAYLIST_H_
#define HLS_M3U8_PLAYLIST_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <string>
#include <string_view>

// A header that is used for a second text keeps what that text does not say, but for isLive,
// totalDuration and streamInfPending.
struct M3u8Header {
  bool hasHeader = false;  // a line "#EXTM3U" was seen
  bool allowCache = false;
  bool isLive = true;  // no line that starts with "#EXT-X-ENDLIST" was seen
  std::int32_t version = 0;
  std::int32_t targetDuration = 0;
  float totalDuration = 0;        // the sum over all "#EXTINF:" lines
  bool streamInfPending = false;  // the last tag line was "#EXT-X-STREAM-INF:"
};

// A segment that has no media sequence number: its text had no "#EXT-X-MEDIA-SEQUENCE:" before it.
inline constexpr std::int64_t kNoSequenceNumber = std::numeric_limits<std::int64_t>::min();

// A segment or a variant playlist. A segment bears the numbers of the last variant before it in the
// same text (kept on purpose).
struct M3u8Entry {
  std::string uri;             // resolved
  float duration = 0;          // of a segment
  std::int32_t programId = 0;  // of a variant, as all below
  std::int32_t bandwidth = 0;  // bits a second
  std::int32_t width = 0;      // pixels
  std::int32_t height = 0;

  // Of a segment: the last "#EXT-X-MEDIA-SEQUENCE:" before it and the count of segments in between,
  // those that are dropped included, so that it stays the same while the window moves on.
  std::int64_t number = kNoSequenceNumber;
};

// Segments by their index in the text, from 0; variants by their bandwidth, so that the slowest
// comes first. An entry that is there already is never replaced.
using M3u8Table = std::map<std::int32_t, M3u8Entry>;

// So many bytes may the addresses of one text have, once they are resolved. A line of two
// characters becomes as long as the address of its playlist, so a text of megabytes could fill the
// memory. A playlist of a day in segments of a second has a tenth of it.
inline constexpr std::size_t kMaxResolvedBytes = std::size_t{256} << 20;

// Parses `text`, resolves its addresses against `baseUrl` and adds them to `entries`.
// `mediaSequence` is written only when the text has one. Returns `header.hasHeader`: when that is
// false, what was found is stored all the same.
//
// A segment whose duration is 0 is dropped on purpose. Numbers that are out of range are clamped.
// Addresses beyond kMaxResolvedBytes are left out; what was added before them counts.
bool ParseM3u8(M3u8Header& header, std::string_view baseUrl, std::string_view text,
               std::int64_t& mediaSequence, M3u8Table& entries);

#endif  // HLS_M3U8_PLAYLIST_H_
