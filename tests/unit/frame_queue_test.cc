#include "common/frame_queue.h"

#include <gtest/gtest.h>

#include <vector>

namespace stream {
namespace {

FrameRecord MakeFrame(std::int32_t size, std::uint64_t pts = 0) {
  const std::vector<std::uint8_t> payload(static_cast<std::size_t>(size) + 1, 0x77);
  FrameRecord frame;
  EXPECT_EQ(CreateFrameNode(frame, pts, pts, payload.data(), size, true, true), 0);
  return frame;
}

// A queue that is emptied at the end of the test.
class FrameQueueTest : public testing::Test {
 protected:
  ~FrameQueueTest() override {
    while (Pop() != nullptr) {
    }
  }
  FrameNodePtr Pop() { return FrameNodePtr(PopFrame(&queue_)); }
  void Push(std::int32_t size, std::uint64_t pts = 0) {
    ASSERT_EQ(PushFrame(MakeFrame(size, pts), &queue_), 0);
  }

  FrameQueue queue_;
};

TEST_F(FrameQueueTest, PopOnEmptyQueueReturnsNothing) {
  EXPECT_EQ(Pop(), nullptr);
  EXPECT_EQ(queue_.count, 0U);
  EXPECT_EQ(queue_.totalBytes, 0U);
}

TEST_F(FrameQueueTest, PopWithoutAQueueReturnsNothing) { EXPECT_EQ(PopFrame(nullptr), nullptr); }

TEST_F(FrameQueueTest, CountAndTotalBytesFollowPushesAndPops) {
  Push(100);
  Push(50);
  EXPECT_EQ(queue_.count, 2U);
  EXPECT_EQ(queue_.totalBytes, 150U);
  EXPECT_NE(Pop(), nullptr);
  EXPECT_EQ(queue_.count, 1U);
  EXPECT_EQ(queue_.totalBytes, 50U);
  EXPECT_NE(Pop(), nullptr);
  EXPECT_EQ(queue_.head, nullptr);
  EXPECT_EQ(queue_.tail, nullptr);
}

TEST_F(FrameQueueTest, FramesArePoppedInTheOrderOfPushes) {
  for (std::uint64_t pts = 1; pts <= 3; ++pts) Push(1, pts);
  for (std::uint64_t pts = 1; pts <= 3; ++pts) EXPECT_EQ(Pop()->pts, pts);
}

TEST_F(FrameQueueTest, SequenceNumbersCountPushesWhateverWasPopped) {
  for (int i = 0; i < 3; ++i) Push(1);
  EXPECT_EQ(queue_.FirstSequence(), 1U);
  Pop();
  EXPECT_EQ(queue_.pushed, 3U);
  EXPECT_EQ(queue_.FirstSequence(), 2U);
  Pop();
  Pop();
  EXPECT_EQ(queue_.FirstSequence(), 4U);
}

TEST_F(FrameQueueTest, PushWithoutAQueueFailsAndLeavesThePayloadToTheCaller) {
  FrameRecord frame = MakeFrame(10);
  EXPECT_EQ(PushFrame(frame, nullptr), -1);
  EXPECT_EQ(frame.data[9], 0x77);
  ReleasePayload(frame);
  EXPECT_EQ(frame.data, nullptr);
}

TEST_F(FrameQueueTest, NodeHasItsOwnCopyOfThePayload) {
  std::vector<std::uint8_t> payload = {1, 2, 3};
  FrameRecord frame;
  ASSERT_EQ(CreateFrameNode(frame, 7, 8, payload.data(), 3, false, false), 0);
  payload.assign(3, 0);
  ASSERT_EQ(PushFrame(frame, &queue_), 0);
  const FrameNodePtr node = Pop();
  EXPECT_EQ(node->data[2], 3);
  EXPECT_EQ(node->pts, 7U);
  EXPECT_EQ(node->dts, 8U);
  EXPECT_EQ(node->size, 3);
  EXPECT_EQ(node->isVideo, 0U);
  EXPECT_EQ(node->intact, 0U);
}

// The memory of a frame includes its node, which may be far larger than its payload.
TEST(FrameQueueMemoryTest, SmallVideoFramesReleaseTheirMemoryWhileAudioWaits) {
  constexpr int kFrames = 300'000;
  constexpr std::size_t kMaxBeyond = std::size_t{16} << 20;
  FrameQueue video;
  FrameQueue audio;
  const std::uint8_t payload[] = {0, 0, 0, 1};
  FrameRecord frame;
  for (int i = 0; i < kFrames; ++i) {
    ASSERT_EQ(CreateFrameNode(frame, 0, 0, payload, 4, true, true), 0);
    ASSERT_EQ(PushFrame(frame, &video), 0);
    if (i % 1000 != 0) continue;
    ASSERT_EQ(CreateFrameNode(frame, 0, 0, payload, 4, false, true), 0);
    ASSERT_EQ(PushFrame(frame, &audio), 0);
  }
  EXPECT_GT(HeldPayloadMemory(), kMaxBeyond);
  while (const FrameNodePtr node{PopFrame(&video)}) {
  }
  EXPECT_LE(HeldPayloadMemory(), kMaxBeyond);
  while (const FrameNodePtr node{PopFrame(&audio)}) {
    ASSERT_EQ(node->data[3], 1);
  }
}

TEST_F(FrameQueueTest, FrameWithoutAPayloadIsQueuedAndReleased) {
  EXPECT_EQ(PushFrame(FrameRecord(), &queue_), 0);
  EXPECT_EQ(Pop()->data, nullptr);
}

TEST_F(FrameQueueTest, NegativeSizeIsRefused) {
  FrameRecord frame;
  EXPECT_EQ(CreateFrameNode(frame, 0, 0, nullptr, -1, true, true), -1);
  EXPECT_EQ(frame.data, nullptr);
}

TEST(GlobalFrameQueuesTest, PopBeforeTheFirstResetReturnsNothing) {
  EXPECT_EQ(PopVideoFrame(), nullptr);
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

RunId RunAfter(RunId run) { return RunId{static_cast<std::uint64_t>(run) + 1}; }

TEST(GlobalFrameQueuesTest, ResetReleasesQueuedFramesAndBeginsTheNextRun) {
  ResetFrameQueues();
  const RunId run = FrameQueueRun();
  {
    const std::lock_guard lock(g_frameQueueMutex);
    ASSERT_EQ(PushFrame(MakeFrame(5), g_videoQueue), 0);
    ASSERT_EQ(PushFrame(MakeFrame(5), g_audioQueue), 0);
  }
  ResetFrameQueues();
  EXPECT_EQ(FrameQueueRun(), RunAfter(run));
  EXPECT_EQ(PopVideoFrame(), nullptr);
  EXPECT_EQ(PopAudioFrame(), nullptr);
  const std::lock_guard lock(g_frameQueueMutex);
  EXPECT_EQ(g_videoQueue->count, 0U);
  EXPECT_EQ(g_audioQueue->totalBytes, 0U);
}

TEST(GlobalFrameQueuesTest, ReleaseRemovesQueuesAndFramesAndBeginsTheNextRun) {
  ResetFrameQueues();
  const RunId run = FrameQueueRun();
  {
    const std::lock_guard lock(g_frameQueueMutex);
    ASSERT_EQ(PushFrame(MakeFrame(5), g_videoQueue), 0);
    ASSERT_EQ(PushFrame(MakeFrame(5), g_audioQueue), 0);
  }
  ReleaseFrameQueues();
  EXPECT_EQ(FrameQueueRun(), RunAfter(run));
  EXPECT_EQ(PopVideoFrame(), nullptr);
  EXPECT_EQ(PopAudioFrame(), nullptr);
  const std::lock_guard lock(g_frameQueueMutex);
  EXPECT_EQ(g_videoQueue, nullptr);
  EXPECT_EQ(g_audioQueue, nullptr);
}

TEST(GlobalFrameQueuesTest, ReleaseOfMissingQueuesDoesNothing) {
  ReleaseFrameQueues();
  ReleaseFrameQueues();
  ResetFrameQueues();
  const std::lock_guard lock(g_frameQueueMutex);
  EXPECT_NE(g_videoQueue, nullptr);
  EXPECT_EQ(g_videoQueue->pushed, 0U);
}

TEST(GlobalFrameQueuesTest, EnsureQueueCreatesAMissingQueueOnce) {
  const std::lock_guard lock(g_frameQueueMutex);
  FrameQueue* made = EnsureQueue(true);
  ASSERT_NE(made, nullptr);
  EXPECT_EQ(made, g_videoQueue);
  EXPECT_EQ(EnsureQueue(true), made);
  EXPECT_EQ(EnsureQueue(false), g_audioQueue);
  EXPECT_NE(g_audioQueue, made);
}

}  // namespace
}  // namespace stream
