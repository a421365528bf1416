// A second facade with a player of its own, beside the one of a Play fixture.
#ifndef TESTS_SUPPORT_TWO_FACADES_H_
#define TESTS_SUPPORT_TWO_FACADES_H_

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <future>
#include <string>

#include "public/stream_downloader.h"
#include "tests/support/recording_player.h"
#include "tests/support/wait_until.h"

inline bool WaitForFrames(RecordingPlayer& player, std::size_t count) {
  return player.WaitFor(
      [count](const RecordingPlayer::Record& record) { return record.video.size() >= count; });
}

// Another facade plays `url` until its player gets a message that begins with `line`. It is
// destroyed then, which stops it, and then its player.
inline void PlayOnAnotherFacade(const std::string& url, const std::string& line) {
  RecordingPlayer player;
  CStreamDownloader facade(&player);
  facade.BeginDownload(url);
  EXPECT_TRUE(player.WaitFor([&line](const RecordingPlayer::Record& record) {
    return !record.MessagesWith(line).empty();
  }));
}

// Holds the first video call of a player. Make it before anything plays.
class HeldVideoCall {
 public:
  explicit HeldVideoCall(RecordingPlayer& player) {
    player.during_video = [this] {
      if (!entered_.exchange(true)) release_.get_future().wait();
    };
  }

  bool WaitUntilEntered() {
    return WaitUntil([this] { return entered_.load(); });
  }
  void Release() { release_.set_value(); }

 private:
  std::atomic<bool> entered_{false};
  std::promise<void> release_;
};

// Whether the end of a facade whose stream another facade has stopped waits for a player that is
// in a call.
inline void ExpectEndToWaitFor(HeldVideoCall& call, CStreamDownloader& facade) {
  std::future<bool> ended =
      std::async(std::launch::async, [&facade] { return facade.EndDownload(); });
  EXPECT_TRUE(StillWaits(ended));
  call.Release();
  EXPECT_FALSE(ended.get());
}

#endif  // TESTS_SUPPORT_TWO_FACADES_H_
