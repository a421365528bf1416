// The traits of FLV for the conformance suite (conformance.h).
#ifndef TESTS_CONFORMANCE_FLV_FORMAT_H_
#define TESTS_CONFORMANCE_FLV_FORMAT_H_

#include <chrono>
#include <cstddef>
#include <string>

#include "flv/flv_downloader.h"
#include "flv/flv_stream.h"
#include "tests/conformance/frame_counts.h"
#include "tests/support/flv_tags.h"
#include "tests/support/test_server.h"

namespace stream {

class FlvFormat : public TestServer {
 public:
  using Pipeline = CFlvDownloader;

  static constexpr char kName[] = "FLV";
  static constexpr char kConsoleName[] = "flv";
  static constexpr char kOkLine[] = "PLAY FLV CACHE_NO OK:";
  static constexpr std::size_t kRequests = 1;
  static constexpr std::size_t kAddressRequests = 1;
  static constexpr int kRestartLines = 1;
  static constexpr bool kOwnRunFlag = false;
  static constexpr std::chrono::milliseconds kPace{
      100};  // the interval at which the parser polls for bytes
  static constexpr int kFrames = 40;
  // The two parameter sets are video frames too.
  static constexpr FrameCounts kDue{kFrames + 2, kFrames};
  static constexpr FrameCounts kDueAgain = kDue;

  FlvFormat() { Serve(flv_test::MakeStream(kFrames, kVideoSize)); }

  static bool Runs() { return g_flvRunning.load(); }

  std::string Whole(const std::string& name) const { return Url("/plain/" + name + ".flv"); }
  // Everything but the head is repeated, so the stream stays a sequence of tags. It arrives faster
  // than the parser reads, so the parser never polls.
  std::string Endless(const std::string& name) const {
    return Url("/live/" + std::to_string(flv_test::StreamStart().size()) + "/" + name + ".flv");
  }
  std::string Silent(const std::string& name) const { return Url("/silent/" + name + ".flv"); }
  // The first half is more than the parser waits for before it starts.
  std::string Gated(const std::string& name) const { return Url("/gated/" + name + ".flv"); }
  void ReleaseGated(const std::string& /*name*/) { Release(); }

  static bool WaitForWhole() { return true; }
  static bool WaitForGate() { return true; }

 private:
  static constexpr std::size_t kVideoSize = 1000;
};

}  // namespace stream

#endif  // TESTS_CONFORMANCE_FLV_FORMAT_H_
