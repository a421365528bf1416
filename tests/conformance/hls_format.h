// The traits of HTTP Live Streaming for the conformance suite (conformance.h).
#ifndef TESTS_CONFORMANCE_HLS_FORMAT_H_
#define TESTS_CONFORMANCE_HLS_FORMAT_H_

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "hls/hls_stream.h"
#include "hls/m3u8_downloader.h"
#include "tests/conformance/frame_counts.h"
#include "tests/support/hls_playlists.h"
#include "tests/support/hls_server.h"

namespace stream {

class HlsFormat : public HlsServer {
 public:
  using Pipeline = CM3u8Downloader;

  static constexpr char kName[] = "M3U8";
  static constexpr char kConsoleName[] = "m3u8";
  static constexpr char kOkLine[] = "PLAY M3U8 OK:";
  static constexpr std::size_t kRequests = 3;
  static constexpr std::size_t kAddressRequests = 2;
  static constexpr int kRestartLines = 0;
  static constexpr bool kOwnRunFlag = true;
  static constexpr std::chrono::milliseconds kPace{1};
  static constexpr int kFrames = 40;
  static constexpr FrameCounts kDue{kFrames - 1, kFrames - 1};
  // Kept for compatibility: after a stop the first video frame is skipped.
  static constexpr FrameCounts kDueAgain{kFrames - 2, kFrames - 1};

  static bool Runs() { return g_hlsStream->ActiveRuns(); }

  std::string Whole(const std::string& name) {
    const auto uris = PutSegments(name);
    Put(Path(name), hls_test::OnDemandPlaylist(uris));
    return Url(Path(name));
  }
  // A live stream: its segments play once, and its playlist is fetched again and again.
  std::string Endless(const std::string& name) {
    const auto uris = PutSegments(name);
    Put(Path(name), hls_test::LivePlaylist(0, uris));
    return Url(Path(name));
  }
  std::string Silent(const std::string& name) {
    Put(Path(name), stream::Silent());
    return Url(Path(name));
  }
  // Most of the second segment is held back.
  std::string Gated(const std::string& name) {
    const std::string url = Whole(name);
    Put(GatedPath(name), GatedAfter(kTsPacketSize, stream::Whole(Segments().at(1))));
    return url;
  }
  void ReleaseGated(const std::string& name) { Release(GatedPath(name)); }

  static bool WaitForWhole() { return true; }
  static bool WaitForGate() { return true; }

 private:
  static constexpr int kSegments = 2;

  static std::string Path(const std::string& name) { return "/" + name + ".m3u8"; }

  static std::string GatedPath(const std::string& name) { return "/" + name + "1.ts"; }

  static std::vector<ts_test::Bytes> Segments() {
    return hls_test::CutIntoSegments(ts_test::MakeStream(kFrames), kSegments);
  }

  hls_test::Uris PutSegments(const std::string& name) {
    const auto uris = hls_test::SegmentUris(0, kSegments, name);
    const auto segments = Segments();
    for (std::size_t i = 0; i < uris.size(); ++i) Put("/" + uris[i], segments[i]);
    return uris;
  }
};

}  // namespace stream

#endif  // TESTS_CONFORMANCE_HLS_FORMAT_H_
