#include <gtest/gtest.h>

#include <cstdint>
#include <mutex>

#include "common/frame_queue.h"
#include "hls/segment_parse.h"

namespace stream {
namespace {

class VideoArrivalDetectorTest : public testing::Test {
 protected:
  VideoArrivalDetectorTest() { ResetFrameQueues(); }
  ~VideoArrivalDetectorTest() override { ReleaseFrameQueues(); }

  static void Push(bool is_video, int count) {
    const std::uint8_t payload[] = {1};
    for (int i = 0; i < count; ++i) {
      FrameRecord frame;
      ASSERT_EQ(CreateFrameNode(frame, 0, 0, payload, 1, true, true), 0);
      const std::lock_guard lock(g_frameQueueMutex);
      ASSERT_EQ(PushFrame(frame, EnsureQueue(is_video)), 0);
    }
  }
  static void PushVideo(int count) { Push(true, count); }
};

TEST_F(VideoArrivalDetectorTest, EarlierFramesDoNotCount) {
  PushVideo(3);
  VideoArrivalDetector video;
  EXPECT_FALSE(video.Seen());
}

TEST_F(VideoArrivalDetectorTest, DeliveredFrameCounts) {
  VideoArrivalDetector video;
  PushVideo(1);
  EXPECT_NE(PopVideoFrame(), nullptr);
  EXPECT_TRUE(video.Seen());
}

TEST_F(VideoArrivalDetectorTest, AudioDoesNotCount) {
  VideoArrivalDetector video;
  Push(false, 1);
  EXPECT_FALSE(video.Seen());
}

TEST_F(VideoArrivalDetectorTest, SameNumberOfFramesAfterAResetCounts) {
  PushVideo(3);
  VideoArrivalDetector video;
  ResetFrameQueues();
  PushVideo(3);
  EXPECT_TRUE(video.Seen());
}

TEST_F(VideoArrivalDetectorTest, ResetAloneDoesNotCount) {
  PushVideo(3);
  VideoArrivalDetector video;
  ResetFrameQueues();
  EXPECT_FALSE(video.Seen());
  PushVideo(1);
  EXPECT_TRUE(video.Seen()) << "a frame after the reset counts";
}

TEST_F(VideoArrivalDetectorTest, FrameSeenBeforeAResetStillCounts) {
  VideoArrivalDetector video;
  PushVideo(1);
  EXPECT_TRUE(video.Seen());
  ResetFrameQueues();
  EXPECT_TRUE(video.Seen());
}

TEST_F(VideoArrivalDetectorTest, NothingCountsWithoutQueues) {
  ReleaseFrameQueues();
  VideoArrivalDetector video;
  EXPECT_FALSE(video.Seen());
  PushVideo(1);
  EXPECT_TRUE(video.Seen());
}

}  // namespace
}  // namespace stream
