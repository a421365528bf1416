#include "hls/hls_delivery.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "common/frame_queue.h"
#include "common/pipeline.h"
#include "hls/hls_task_state.h"
#include "tests/support/recording_player.h"
#include "tests/support/wait_until.h"

namespace stream {
namespace {

using Record = RecordingPlayer::Record;
using testing::ElementsAre;

class HlsDeliveryTest : public testing::Test {
 protected:
  HlsDeliveryTest() {
    ResetFrameQueues();
    hls_.player = PlayerPort(&player_);
    hls_.running = true;
  }
  ~HlsDeliveryTest() override { ReleaseFrameQueues(); }

  static void Push(FrameQueue*& queue, std::uint64_t pts, bool is_video) {
    const std::uint8_t payload[] = {1};
    FrameRecord frame;
    ASSERT_EQ(CreateFrameNode(frame, pts, pts, payload, 1, is_video, true), 0);
    const std::lock_guard lock(g_frameQueueMutex);
    ASSERT_EQ(PushFrame(frame, queue), 0);
  }
  static void PushVideo(std::uint64_t pts) { Push(g_videoQueue, pts, true); }
  static void PushAudio(std::uint64_t pts) { Push(g_audioQueue, pts, false); }

  // Delivers both kinds until `met` is true, then stops. Returns the console output.
  template <typename Condition>
  std::string DeliverUntil(Condition met) {
    testing::internal::CaptureStdout();
    CThreadPool pool(2);
    Pipeline tasks({"m3u8", "M3U8", true}, hls_.player, hls_.running, pool);
    tasks.AddDeliveryTasks(HlsFrameFilters(hls_));
    EXPECT_TRUE(WaitUntil([&] { return met(player_.Snapshot()); }));
    hls_.running = false;
    pool.Stop();
    return testing::internal::GetCapturedStdout();
  }

  RecordingPlayer player_;
  HlsTaskState hls_;
};

TEST_F(HlsDeliveryTest, BothKindsReachThePlayerAndTheEndsAreReported) {
  PushVideo(1);
  PushAudio(2);
  const std::string console = DeliverUntil(
      [](const Record& record) { return record.video.size() == 1 && record.audio.size() == 1; });
  EXPECT_THAT(console, testing::HasSubstr("m3u8 video thread stop.\n"));
  EXPECT_THAT(console, testing::HasSubstr("m3u8 audio thread stop.\n"));
  EXPECT_THAT(player_.Snapshot().messages,
              testing::UnorderedElementsAre("m3u8 video thread stop.", "m3u8 audio thread stop."));
}

TEST_F(HlsDeliveryTest, OnlyTheFirstVideoFrameAfterAStopIsSkipped) {
  hls_.stream.SkipFirstVideoFrame();
  for (const std::uint64_t pts : {1U, 2U, 3U}) {
    PushVideo(pts);
    PushAudio(pts);
  }
  DeliverUntil(
      [](const Record& record) { return record.video.size() >= 2 && record.audio.size() >= 3; });
  EXPECT_EQ(player_.Snapshot().video.front().pts, 2U);
  EXPECT_EQ(player_.Snapshot().audio.front().pts, 1U);
}

// After a second start two threads deliver video.
TEST_F(HlsDeliveryTest, TwoThreadsSkipNoMoreFramesThanRequested) {
  constexpr int kRounds = 3'000'000;
  std::atomic<std::int32_t> skip{0};
  std::atomic<bool> too_many{false};
  std::atomic<int> missing{2};  // no std::latch: in GCC 12 for Windows its wake-up may be missed
  const auto deliver = [&] {
    --missing;
    while (missing.load() > 0) std::this_thread::yield();
    for (int i = 0; i < kRounds; ++i) {
      --skip;
      while (CountSkippedFrame(skip)) continue;
      if (skip.load() > 0) too_many = true;
    }
  };
  std::thread first(deliver);
  std::thread second(deliver);
  first.join();
  second.join();
  EXPECT_FALSE(too_many.load());
  EXPECT_EQ(skip.load(), 0);
}

TEST_F(HlsDeliveryTest, ListedDurationIsClearedByTheFirstFrameOfEitherKind) {
  for (const bool is_video : {true, false}) {
    hls_.running = true;
    hls_.listedDuration = 30;
    player_.Forget();
    is_video ? PushVideo(1) : PushAudio(1);
    DeliverUntil(
        [](const Record& record) { return record.video.size() + record.audio.size() == 1; });
    EXPECT_EQ(hls_.listedDuration.load(), 0.0F);
  }
}

TEST_F(HlsDeliveryTest, SkippedFrameClearsTheListedDurationToo) {
  hls_.stream.SkipFirstVideoFrame();
  hls_.listedDuration = 30;
  PushVideo(1);
  DeliverUntil([this](const Record&) { return hls_.listedDuration.load() == 0.0F; });
  EXPECT_TRUE(player_.Snapshot().video.empty());
}

TEST_F(HlsDeliveryTest, FrameOfTheOtherKindInAQueueKeepsTheListedDuration) {
  hls_.listedDuration = 30;
  Push(g_audioQueue, 1, true);
  Push(g_videoQueue, 1, false);
  DeliverUntil(
      [](const Record& record) { return record.video.size() == 1 && record.audio.size() == 1; });
  EXPECT_EQ(hls_.listedDuration.load(), 30.0F);
}

TEST_F(HlsDeliveryTest, AudioClockIsTheWholeSecondsOfThePlayTime) {
  const std::uint8_t payload[] = {1};
  FrameRecord frame;
  ASSERT_EQ(CreateFrameNode(frame, 0, 0, payload, 1, false, true), 0);
  frame.playTime = 2 * 90'000 + 89'999;
  {
    const std::lock_guard lock(g_frameQueueMutex);
    ASSERT_EQ(PushFrame(frame, g_audioQueue), 0);
  }
  DeliverUntil([](const Record& record) { return record.audio.size() == 1; });
  EXPECT_THAT(player_.Snapshot().clocks, ElementsAre(2.0F));
}

TEST_F(HlsDeliveryTest, FramesAreRemovedAndReleasedWithoutAPlayer) {
  hls_.player = PlayerPort();
  PushVideo(1);
  DeliverUntil([](const Record&) {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->count == 0;
  });
}

}  // namespace
}  // namespace stream
