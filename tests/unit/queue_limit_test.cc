#include "common/queue_limit.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <mutex>

#include "common/frame_queue.h"
#include "tests/support/polling.h"
#include "tests/support/simulated_clock.h"

namespace stream {
namespace {

class QueueLimitTest : public testing::Test {
 protected:
  QueueLimitTest() { ResetFrameQueues(); }
  ~QueueLimitTest() override {
    running_ = false;
    ReleaseFrameQueues();
  }

  static void Push(std::int32_t size, FrameQueue*& queue) {
    FrameRecord frame;
    ASSERT_EQ(AllocateFrameNode(frame, 0, 0, size, true, true), 0);
    const std::lock_guard lock(g_frameQueueMutex);
    ASSERT_EQ(PushFrame(frame, queue), 0);
  }

  std::future<void> WaitInBackground(const QueueLimit& limit) {
    return std::async(std::launch::async, [this, limit] { WaitForQueueSpace(running_, limit); });
  }

  // Whether the parser checks for queue space every millisecond and finds none.
  bool IsStillPolling() { return StillPolls(clock_, kPace); }

  // Advances to the next check.
  void AdvanceToNextCheck() { clock_.Advance(kPace); }

  static constexpr Clock::Duration kPace{1};

  SimulatedClock clock_;
  std::atomic<bool> running_{true};
};

TEST_F(QueueLimitTest, NoWaitBeforeTheQueuesExist) {
  ReleaseFrameQueues();
  WaitForQueueSpace(running_, {0, 0});
}

TEST_F(QueueLimitTest, NoWaitAtTheLimit) {
  Push(50, g_videoQueue);
  Push(50, g_videoQueue);
  Push(100, g_audioQueue);
  WaitForQueueSpace(running_, {2, 100});
}

TEST_F(QueueLimitTest, OneFrameAboveTheLimitWaitsUntilOneIsRemoved) {
  for (int i = 0; i < 3; ++i) Push(0, g_audioQueue);
  const std::future<void> waiting = WaitInBackground({2, 100});
  EXPECT_TRUE(IsStillPolling());
  PopAudioFrame();
  AdvanceToNextCheck();
  waiting.wait();
}

TEST_F(QueueLimitTest, OneByteAboveTheLimitWaitsUntilItsFrameIsRemoved) {
  Push(101, g_videoQueue);
  const std::future<void> waiting = WaitInBackground({2, 100});
  EXPECT_TRUE(IsStillPolling());
  PopVideoFrame();
  AdvanceToNextCheck();
  waiting.wait();
}

TEST_F(QueueLimitTest, StopEndsTheWait) {
  Push(101, g_videoQueue);
  const std::future<void> waiting = WaitInBackground({2, 100});
  EXPECT_TRUE(IsStillPolling());
  running_ = false;
  AdvanceToNextCheck();
  waiting.wait();
}

}  // namespace
}  // namespace stream
