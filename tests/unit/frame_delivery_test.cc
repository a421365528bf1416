#include "common/frame_delivery.h"

#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>

#include "tests/support/polling.h"
#include "tests/support/recording_player.h"
#include "tests/support/simulated_clock.h"

namespace stream {
namespace {

// Runs a delivery loop on a thread of its own, in simulated time, until the test ends.
class FrameDeliveryTest : public testing::Test {
 protected:
  FrameDeliveryTest() { ResetFrameQueues(); }
  ~FrameDeliveryTest() override { Stop(); }

  void Stop() {
    running_ = false;
    clock_.Release();
    if (thread_.joinable()) thread_.join();
  }

  static void Push(FrameQueue*& queue, std::uint64_t play_time) {
    const std::uint8_t payload[] = {9, 9};
    FrameRecord frame;
    ASSERT_EQ(CreateFrameNode(frame, play_time, play_time, payload, 2, true, true), 0);
    frame.playTime = play_time;
    const std::lock_guard lock(g_frameQueueMutex);
    ASSERT_EQ(PushFrame(frame, queue), 0);
  }

  static bool IsEmpty(FrameQueue*& queue) {
    const std::lock_guard lock(g_frameQueueMutex);
    return queue->count == 0;
  }

  void StartVideo() {
    thread_ = std::thread([this] {
      DeliverVideoFrames({running_, PlayerPort(&player_), {}, "video thread stop."});
    });
  }

  std::size_t DeliveredVideo() const { return player_.Snapshot().video.size(); }

  static constexpr Clock::Duration kPace{1};

  SimulatedClock clock_;
  std::atomic<bool> running_{true};
  RecordingPlayer player_;
  std::thread thread_;
};

TEST_F(FrameDeliveryTest, VideoFramesReachThePlayerInOrder) {
  Push(g_videoQueue, 1);
  Push(g_videoQueue, 2);
  StartVideo();
  EXPECT_TRUE(clock_.AdvanceUntil([this] { return DeliveredVideo() == 2; }, 1, kPace));
  const auto record = player_.Snapshot();
  EXPECT_EQ(record.video.front().pts, 1U);
  EXPECT_EQ(record.video.back().pts, 2U);
}

TEST_F(FrameDeliveryTest, LoopSleepsOneMillisecondAfterEachFrame) {
  for (std::uint64_t i = 0; i < 5; ++i) Push(g_videoQueue, i);
  StartVideo();
  for (std::size_t i = 1; i <= 5; ++i) {
    ASSERT_TRUE(clock_.WaitForWaiters(1));
    EXPECT_EQ(DeliveredVideo(), i);
    EXPECT_EQ(clock_.Sleeps(kPace), i);
    clock_.Advance(kPace);
  }
}

TEST_F(FrameDeliveryTest, LoopSleepsOneMillisecondIfThereIsNoFrame) {
  StartVideo();
  EXPECT_TRUE(StillPolls(clock_, kPace));
  Push(g_videoQueue, 1);
  EXPECT_TRUE(clock_.AdvanceUntil([this] { return DeliveredVideo() == 1; }, 1, kPace));
}

TEST_F(FrameDeliveryTest, AudioLoopLeavesTheVideoQueueUnchanged) {
  Push(g_videoQueue, 1);
  Push(g_audioQueue, 90'000);
  thread_ = std::thread([this] {
    DeliverAudioFrames({running_, PlayerPort(&player_), {}, "audio thread stop."});
  });
  EXPECT_TRUE(player_.WaitFor([](const auto& record) { return record.audio.size() == 1; }));
  EXPECT_EQ(player_.Snapshot().clocks, std::vector<float>{1.0F});
  EXPECT_FALSE(IsEmpty(g_videoQueue));
}

TEST_F(FrameDeliveryTest, UnwantedFrameIsReleasedAndNotDelivered) {
  Push(g_videoQueue, 1);
  Push(g_videoQueue, 2);
  const auto wanted = [](const FrameRecord& frame) { return frame.playTime >= 2; };
  thread_ = std::thread([&] {
    DeliverVideoFrames({running_, PlayerPort(&player_), wanted, "video thread stop."});
  });
  EXPECT_TRUE(clock_.AdvanceUntil([this] { return DeliveredVideo() == 1; }, 1, kPace));
  EXPECT_EQ(player_.Snapshot().video.front().pts, 2U);
}

TEST_F(FrameDeliveryTest, FramesAreRemovedWithoutAPlayer) {
  Push(g_videoQueue, 1);
  Push(g_videoQueue, 2);
  thread_ = std::thread([this] {
    DeliverVideoFrames({running_, PlayerPort(nullptr), {}, "video thread stop."});
  });
  EXPECT_TRUE(clock_.AdvanceUntil([] { return IsEmpty(g_videoQueue); }, 1, kPace));
}

TEST_F(FrameDeliveryTest, StopLineIsWrittenWhenTheLoopEnds) {
  testing::internal::CaptureStdout();
  running_ = false;
  DeliverVideoFrames({running_, PlayerPort(nullptr), {}, "video thread stop."});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "video thread stop.\n");
}

}  // namespace
}  // namespace stream
