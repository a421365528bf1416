#include "host/player/frame_receiver.h"

#include <gtest/gtest.h>

#include "tests/host/every_call.h"
#include "tests/host/simulated_clock.h"
#include "tests/host_player/frame_at.h"

namespace player {
namespace {

class FrameReceiverTest : public testing::Test {
 protected:
  host::SimulatedClock clock_;
  PlayCounts counts_;
  FrameReceiver receiver_{clock_, counts_};
  FrameQueue queue_{{}};
};

TEST_F(FrameReceiverTest, FramesAreCopiedIntoTheQueueAndCounted) {
  receiver_.SetQueue(&queue_);
  std::string payload = "abc";
  receiver_.OnVideoFrame(FrameAt(9000, payload));
  payload = "xyz";
  receiver_.OnAudioFrame(FrameAt(100, payload));
  const auto video = queue_.Pop(Kind::kVideo, false);
  ASSERT_TRUE(video.has_value());
  EXPECT_EQ(video->data, (std::vector<std::uint8_t>{'a', 'b', 'c'}));
  EXPECT_EQ(video->pts, 9000U);
  EXPECT_EQ(video->dts, 4500U);
  EXPECT_TRUE(queue_.Pop(Kind::kAudio, false).has_value());
  EXPECT_EQ(counts_.video_frames, 1U);
  EXPECT_EQ(counts_.audio_frames, 1U);
}

TEST_F(FrameReceiverTest, FrameWithoutQueueOrBytesIsCountedOnly) {
  receiver_.OnVideoFrame(FrameAt(1, "a"));
  receiver_.SetQueue(&queue_);
  receiver_.OnVideoFrame(FrameAt(1, ""));
  MediaFrame broken = FrameAt(1, "a");
  broken.size = -1;
  receiver_.OnVideoFrame(broken);
  EXPECT_TRUE(queue_.IsEmpty(Kind::kVideo));
  EXPECT_EQ(counts_.video_frames, 3U);
}

TEST_F(FrameReceiverTest, WithoutMemoryNoCallThrowsAndEachIsAnError) {
  host::ReportWithoutMemory observer;
  FrameReceiver receiver(clock_, counts_, &observer);
  EXPECT_NO_THROW(host::MakeEveryCall(receiver, 1));
  EXPECT_EQ(counts_.errors, host::kEveryCall);
}

TEST_F(FrameReceiverTest, NewestOfEachValueIsKept) {
  receiver_.OnDuration(3);
  receiver_.OnDuration(4);
  receiver_.OnBufferedTime(2);
  receiver_.OnMessage("PLAY MP4:x");
  EXPECT_EQ(receiver_.LatestStatus().duration, 4);
  EXPECT_EQ(receiver_.LatestStatus().buffered, 2);
  EXPECT_EQ(receiver_.LatestStatus().status, "PLAY MP4:x");
  EXPECT_FALSE(receiver_.IsFlv());
  receiver_.OnMessage("PLAY FLV:x");
  EXPECT_TRUE(receiver_.IsFlv());
}

TEST_F(FrameReceiverTest, OriginIsTheEarlierOfTheFirstFrames) {
  EXPECT_FALSE(receiver_.OriginSeconds().has_value());
  receiver_.OnVideoFrame(FrameAt(180'000, "v"));
  receiver_.OnAudioFrame(FrameAt(90'000, "a"));
  receiver_.OnVideoFrame(FrameAt(45'000, "v"));
  EXPECT_DOUBLE_EQ(*receiver_.OriginSeconds(), 1);
  EXPECT_DOUBLE_EQ(*receiver_.FarthestSeconds(), 2);
}

TEST_F(FrameReceiverTest, KeptOriginDoesNotMove) {
  receiver_.OnVideoFrame(FrameAt(180'000, "v"));
  receiver_.KeepOrigin();
  receiver_.OnAudioFrame(FrameAt(0, "a"));
  EXPECT_DOUBLE_EQ(*receiver_.OriginSeconds(), 2);
}

}  // namespace
}  // namespace player
