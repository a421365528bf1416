// Built only with the address sanitizer, which detects released memory.
#include <gtest/gtest.h>
#include <sanitizer/asan_interface.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "common/frame_delivery.h"
#include "tests/support/recording_player.h"

namespace stream {
namespace {

TEST(PayloadLifetimeTest, PayloadIsReleasedAfterTheCall) {
  ResetFrameQueues();
  const std::uint8_t bytes[] = {1, 2, 3, 4};
  FrameRecord frame;
  ASSERT_EQ(CreateFrameNode(frame, 0, 0, bytes, 4, true, true), 0);
  {
    const std::lock_guard lock(g_frameQueueMutex);
    ASSERT_EQ(PushFrame(frame, g_videoQueue), 0);
  }
  const std::uint8_t* const kept = frame.data;
  RecordingPlayer player;
  std::atomic<bool> running{true};
  std::atomic<bool> released_during_call{true};
  player.during_video = [&] {
    released_during_call = __asan_address_is_poisoned(kept) != 0;
    running = false;
  };
  DeliverVideoFrames({running, PlayerPort(&player), {}, "video thread stop."});
  EXPECT_FALSE(released_during_call);
  EXPECT_TRUE(__asan_address_is_poisoned(kept));
}

}  // namespace
}  // namespace stream
