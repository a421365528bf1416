// Playlists and their segments, for tests that play them.
#ifndef TESTS_SUPPORT_HLS_PLAYLISTS_H_
#define TESTS_SUPPORT_HLS_PLAYLISTS_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/ts_packets.h"

namespace stream {

namespace hls_test {

using Uris = std::vector<std::string>;

// "seg<first>.ts" and the following names.
inline Uris SegmentUris(int first, int count, const std::string& prefix = "seg") {
  Uris uris;
  for (int i = first; i < first + count; ++i) uris.push_back(prefix + std::to_string(i) + ".ts");
  return uris;
}

// Segments of ten seconds, without a playlist header.
inline std::string SegmentLines(const Uris& uris) {
  std::string lines;
  for (const std::string& uri : uris) lines += "#EXTINF:10.000,\n" + uri + "\n";
  return lines;
}

inline std::string LivePlaylist(std::int64_t first, const Uris& uris) {
  return "#EXTM3U\n#EXT-X-TARGETDURATION:10\n#EXT-X-MEDIA-SEQUENCE:" + std::to_string(first) +
         "\n" + SegmentLines(uris);
}

inline std::string OnDemandPlaylist(const Uris& uris) {
  return LivePlaylist(0, uris) + "#EXT-X-ENDLIST\n";
}

struct Variant {
  int bandwidth;
  std::string uri;
};

inline std::string MasterPlaylist(const std::vector<Variant>& variants) {
  std::string text = "#EXTM3U\n";
  for (const Variant& variant : variants) {
    text += "#EXT-X-STREAM-INF:PROGRAM-ID=1,BANDWIDTH=" + std::to_string(variant.bandwidth) + "\n" +
            variant.uri + "\n";
  }
  return text;
}

// A stream cut at packet boundaries into pieces of about equal size.
inline std::vector<ts_test::Bytes> CutIntoSegments(const ts_test::Bytes& stream,
                                                   std::size_t count) {
  const std::size_t packets = stream.size() / kTsPacketSize;
  const auto cut = [&](std::size_t i) {
    return stream.begin() + static_cast<std::ptrdiff_t>(packets * i / count * kTsPacketSize);
  };
  std::vector<ts_test::Bytes> segments;
  for (std::size_t i = 0; i < count; ++i) segments.emplace_back(cut(i), cut(i + 1));
  return segments;
}

// A null packet, which players skip.
inline ts_test::Packet NullPacket() {
  constexpr std::uint16_t kNullPid = 0x1FFF;
  return ts_test::MakePacket(kNullPid, false, 0, ts_test::Bytes(kTsPacketSize - 4, 0));
}

// The segment followed by null packets, the last of them truncated, so that the size is exactly
// `size`.
inline ts_test::Bytes PaddedTo(std::size_t size, ts_test::Bytes segment) {
  const ts_test::Packet filler = NullPacket();
  segment.reserve(size + filler.size());
  while (segment.size() < size) segment.insert(segment.end(), filler.begin(), filler.end());
  segment.resize(size);
  return segment;
}

}  // namespace hls_test

}  // namespace stream

#endif  // TESTS_SUPPORT_HLS_PLAYLISTS_H_
