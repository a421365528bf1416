#include "common/frame_delivery.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "tests/support/recording_player.h"

namespace {

// Runs one delivery loop on a thread of its own until the test ends.
class FrameDeliveryTest : public testing::Test {
 protected:
  FrameDeliveryTest() { ResetFrameQueues(); }
  ~FrameDeliveryTest() override { Stop(); }

  void Stop() {
    running_ = false;
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

  static bool BecomesEmpty(FrameQueue*& queue) {
    const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
    while (!IsEmpty(queue) && std::chrono::steady_clock::now() < limit) std::this_thread::yield();
    return IsEmpty(queue);
  }

  std::atomic<bool> running_{true};
  RecordingPlayer player_;
  std::thread thread_;
};

TEST_F(FrameDeliveryTest, VideoFramesReachThePlayerInOrder) {
  Push(g_videoQueue, 1);
  Push(g_videoQueue, 2);
  thread_ = std::thread([this] {
    DeliverVideoFrames({running_, PlayerPort(&player_), {}, "video thread stop."});
  });
  EXPECT_TRUE(player_.WaitFor([](const auto& record) { return record.video.size() == 2; }));
  const auto record = player_.Snapshot();
  EXPECT_EQ(record.video.front().pts, 1U);
  EXPECT_EQ(record.video.back().pts, 2U);
}

TEST_F(FrameDeliveryTest, AudioLoopLeavesTheVideoQueueAlone) {
  Push(g_videoQueue, 1);
  Push(g_audioQueue, 90'000);
  thread_ = std::thread([this] {
    DeliverAudioFrames({running_, PlayerPort(&player_), {}, "audio thread stop."});
  });
  EXPECT_TRUE(player_.WaitFor([](const auto& record) { return record.audio.size() == 1; }));
  EXPECT_EQ(player_.Snapshot().clocks, std::vector<float>{1.0F});
  EXPECT_FALSE(IsEmpty(g_videoQueue));
}

TEST_F(FrameDeliveryTest, UnwantedFrameIsReleasedUnseen) {
  Push(g_videoQueue, 1);
  Push(g_videoQueue, 2);
  const auto wanted = [](const FrameRecord& frame) { return frame.playTime >= 2; };
  thread_ = std::thread([&] {
    DeliverVideoFrames({running_, PlayerPort(&player_), wanted, "video thread stop."});
  });
  EXPECT_TRUE(player_.WaitFor([](const auto& record) { return record.video.size() == 1; }));
  EXPECT_EQ(player_.Snapshot().video.front().pts, 2U);
}

TEST_F(FrameDeliveryTest, WithoutAPlayerFramesAreStillTaken) {
  Push(g_videoQueue, 1);
  Push(g_videoQueue, 2);
  thread_ = std::thread([this] {
    DeliverVideoFrames({running_, PlayerPort(nullptr), {}, "video thread stop."});
  });
  EXPECT_TRUE(BecomesEmpty(g_videoQueue));
}

TEST_F(FrameDeliveryTest, StopLineIsWrittenWhenTheLoopEnds) {
  testing::internal::CaptureStdout();
  running_ = false;
  DeliverVideoFrames({running_, PlayerPort(nullptr), {}, "video thread stop."});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "video thread stop.\n");
}

}  // namespace
