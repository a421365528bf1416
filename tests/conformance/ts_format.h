// The traits of plain transport streams for the conformance suite (conformance.h).
#ifndef TESTS_CONFORMANCE_TS_FORMAT_H_
#define TESTS_CONFORMANCE_TS_FORMAT_H_

#include <chrono>
#include <cstddef>
#include <string>

#include "tests/conformance/frame_counts.h"
#include "tests/support/test_server.h"
#include "tests/support/ts_packets.h"
#include "tests/support/wait_until.h"
#include "ts/ts_downloader.h"
#include "ts/ts_state.h"

namespace stream {

class TsFormat : public TestServer {
 public:
  using Pipeline = CTsDownloader;

  static constexpr char kName[] = "TS";
  static constexpr char kConsoleName[] = "ts";
  static constexpr char kOkLine[] = "PLAY TS OK:";
  static constexpr std::size_t kRequests = 1;
  static constexpr std::size_t kAddressRequests = 1;
  static constexpr int kRestartLines = 1;
  static constexpr bool kOwnRunFlag = false;
  static constexpr std::chrono::milliseconds kPace{10};  // while there is nothing to parse
  static constexpr int kFrames = 40;
  // The last frame of each kind stays in the demultiplexer.
  static constexpr FrameCounts kDue{kFrames - 1, kFrames - 1};
  static constexpr FrameCounts kDueAgain = kDue;

  TsFormat() : stream_(ts_test::MakeStream(kFrames)) { Serve(stream_); }

  static bool Runs() { return g_tsRunning.load(); }

  std::string Whole(const std::string& name) const { return Url("/plain/" + name + ".ts"); }
  std::string Endless(const std::string& name) const { return Url("/live/376/" + name + ".ts"); }
  std::string Silent(const std::string& name) const { return Url("/silent/" + name + ".ts"); }
  std::string Gated(const std::string& name) const { return Url("/gated/" + name + ".ts"); }
  void ReleaseGated(const std::string& /*name*/) { Release(); }

  // Bytes received by any start are reported under the address of the latest start, so they must be
  // complete before another start.
  bool WaitForWhole() const { return WaitForReceived(stream_.size()); }
  bool WaitForGate() const { return WaitForReceived(stream_.size() / 2); }

 private:
  static bool WaitForReceived(std::size_t size) {
    return WaitUntil([size] { return g_tsDownloaded.load() == size; });
  }

  const ts_test::Bytes stream_;
};

}  // namespace stream

#endif  // TESTS_CONFORMANCE_TS_FORMAT_H_
