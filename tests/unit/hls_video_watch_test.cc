#include "hls/video_watch.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <mutex>

#include "common/frame_queue.h"

namespace {

class VideoWatchTest : public testing::Test {
 protected:
  VideoWatchTest() { ResetFrameQueues(); }
  ~VideoWatchTest() override { ReleaseFrameQueues(); }

  static void Push(FrameQueue*& queue, int count) {
    const std::uint8_t payload[] = {1};
    for (int i = 0; i < count; ++i) {
      FrameRecord frame;
      ASSERT_EQ(CreateFrameNode(frame, 0, 0, payload, 1, true, true), 0);
      const std::lock_guard lock(g_frameQueueMutex);
      ASSERT_EQ(PushFrame(frame, EnsureQueue(queue)), 0);
    }
  }
  static void PushVideo(int count) { Push(g_videoQueue, count); }
};

TEST_F(VideoWatchTest, EarlierFramesDoNotCount) {
  PushVideo(3);
  VideoWatch watch;
  EXPECT_FALSE(watch.HasCome());
}

TEST_F(VideoWatchTest, DeliveredFrameCounts) {
  VideoWatch watch;
  PushVideo(1);
  EXPECT_NE(PopVideoFrame(), nullptr);
  EXPECT_TRUE(watch.HasCome());
}

TEST_F(VideoWatchTest, AudioDoesNotCount) {
  VideoWatch watch;
  Push(g_audioQueue, 1);
  EXPECT_FALSE(watch.HasCome());
}

TEST_F(VideoWatchTest, SameNumberOfFramesAfterAResetCounts) {
  PushVideo(3);
  VideoWatch watch;
  ResetFrameQueues();
  PushVideo(3);
  EXPECT_TRUE(watch.HasCome());
}

TEST_F(VideoWatchTest, ResetAloneDoesNotCount) {
  PushVideo(3);
  VideoWatch watch;
  ResetFrameQueues();
  EXPECT_FALSE(watch.HasCome());
  PushVideo(1);
  EXPECT_TRUE(watch.HasCome()) << "a frame after the reset counts";
}

TEST_F(VideoWatchTest, FrameSeenBeforeAResetStillCounts) {
  VideoWatch watch;
  PushVideo(1);
  EXPECT_TRUE(watch.HasCome());
  ResetFrameQueues();
  EXPECT_TRUE(watch.HasCome());
}

TEST_F(VideoWatchTest, NothingCountsWithoutQueues) {
  ReleaseFrameQueues();
  VideoWatch watch;
  EXPECT_FALSE(watch.HasCome());
  PushVideo(1);
  EXPECT_TRUE(watch.HasCome());
}

}  // namespace
