// The traits of MP4 for the conformance suite (conformance.h).
#ifndef TESTS_CONFORMANCE_MP4_FORMAT_H_
#define TESTS_CONFORMANCE_MP4_FORMAT_H_

#include <chrono>
#include <cstddef>
#include <string>

#include "mp4/mp4_downloader.h"
#include "mp4/mp4_state.h"
#include "tests/conformance/frame_counts.h"
#include "tests/support/mp4_movies.h"
#include "tests/support/mp4_server.h"

namespace stream {

class Mp4Format : public Mp4Server {
 public:
  using Pipeline = CMp4Downloader;

  static constexpr char kName[] = "MP4";
  static constexpr char kConsoleName[] = "mp4";
  static constexpr char kOkLine[] = "PLAY MP4 OK:";
  static constexpr std::size_t kRequests = 1;
  static constexpr std::size_t kAddressRequests = 1;
  static constexpr int kRestartLines = 1;
  static constexpr bool kOwnRunFlag = false;
  static constexpr std::chrono::milliseconds kPace{1};
  static constexpr int kFrames = 100;
  static constexpr FrameCounts kDue{kFrames, kFrames};
  static constexpr FrameCounts kDueAgain = kDue;

  Mp4Format() {
    Serve(mp4_test::BuildMp4(mp4_test::MakeMovie({.samples = kFrames, .video_size = kVideoSize}))
              .bytes);
  }

  static bool Runs() { return g_mp4Running.load(); }

  std::string Whole(const std::string& name) { return Put(name, {}); }
  // A movie always has an end, so this one is received slowly, far slower than it plays.
  std::string Endless(const std::string& name) {
    return Put(name, {.piece = kVideoSize, .pause = std::chrono::milliseconds(2)});
  }
  std::string Silent(const std::string& name) { return Put(name, {.silent = true}); }
  std::string Gated(const std::string& name) {
    return Put(name, {.until = kFrames * kVideoSize / 2, .end = Mp4Reply::End::kGate});
  }
  void ReleaseGated(const std::string& /*name*/) { Release(); }

  static bool WaitForWhole() { return true; }
  static bool WaitForGate() { return true; }

 private:
  static constexpr std::size_t kVideoSize = 500;

  std::string Put(const std::string& name, const Mp4Reply& reply) {
    const std::string path = "/" + name + ".mp4";
    AnswerAt(path, reply);
    return Url(path);
  }
};

}  // namespace stream

#endif  // TESTS_CONFORMANCE_MP4_FORMAT_H_
