#include "common/stop_protocol.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <future>
#include <mutex>
#include <string>
#include <thread>

#include "common/console.h"
#include "common/frame_queue.h"
#include "tests/support/test_limit.h"

namespace {

class StopProtocolTest : public testing::Test {
 protected:
  StopProtocolTest() { ResetFrameQueues(); }

  StoppingPipeline Pipeline() {
    return {"ts", running_, pool_, gate_, [this] { wake_(); }};
  }

  // The console output of StopPipeline. `result` receives its return value.
  std::string Stop(bool& result) {
    testing::internal::CaptureStdout();
    result = StopPipeline(Pipeline());
    return testing::internal::GetCapturedStdout();
  }
  bool Stop() {
    bool result = false;
    Stop(result);
    return result;
  }

  // Queues more than one frame of each kind, so that a single pop does not empty a queue.
  static void QueueFrames() {
    for (int i = 0; i < 3; ++i) {
      Queue(g_videoQueue, true);
      Queue(g_audioQueue, false);
    }
  }
  static void Queue(FrameQueue* queue, bool is_video) {
    const std::uint8_t byte = 1;
    FrameRecord frame;
    ASSERT_EQ(CreateFrameNode(frame, 0, 0, &byte, 1, is_video, true), 0);
    const std::lock_guard lock(g_frameQueueMutex);
    ASSERT_EQ(PushFrame(frame, queue), 0);
  }

  std::atomic<bool> running_{true};
  std::function<void()> wake_ = [] {};
  TaskGate gate_;
  CThreadPool pool_{1};
};

TEST_F(StopProtocolTest, OrderIsLineFlagWakeTasksVideoAudio) {
  std::promise<void> woken;
  std::promise<void> begun;
  pool_.AddTask(gate_.Admit([&] {
    begun.set_value();
    const bool was_woken = woken.get_future().wait_for(kTestLimit) == std::future_status::ready;
    ConsoleLine(was_woken ? "task ends" : "task was joined before it was woken");
  }));
  begun.get_future().wait();
  wake_ = [&] {
    ConsoleLine(running_.load() ? "wake while the flag is set" : "wake");
    woken.set_value();
  };
  bool was_running = false;
  EXPECT_EQ(Stop(was_running),
            "ts EndDownload...\nwake\ntask ends\nts video clear.\nts audio clear.\n");
  EXPECT_TRUE(was_running);
}

TEST_F(StopProtocolTest, LinesBeginWithTheNameOfThePipeline) {
  testing::internal::CaptureStdout();
  StopPipeline({"flv", running_, pool_, gate_, [] {}});
  EXPECT_EQ(testing::internal::GetCapturedStdout(),
            "flv EndDownload...\nflv video clear.\nflv audio clear.\n");
}

TEST_F(StopProtocolTest, VideoQueueIsEmptied) {
  QueueFrames();
  EXPECT_TRUE(Stop());
  EXPECT_EQ(PopVideoFrame(), nullptr);
}

TEST_F(StopProtocolTest, AudioQueueIsEmptied) {
  QueueFrames();
  EXPECT_TRUE(Stop());
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

TEST_F(StopProtocolTest, FramesQueuedByATaskAfterTheFlagWasClearedAreDroppedToo) {
  std::promise<void> woken;
  std::promise<void> begun;
  pool_.AddTask(gate_.Admit([&] {
    begun.set_value();
    woken.get_future().wait_for(kTestLimit);
    QueueFrames();
  }));
  begun.get_future().wait();
  wake_ = [&] { woken.set_value(); };
  EXPECT_TRUE(Stop());
  EXPECT_EQ(PopVideoFrame(), nullptr);
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

TEST_F(StopProtocolTest, ClearFlagReturnsFalseWithoutALineAndLeavesTheQueuesUnchanged) {
  running_ = false;
  QueueFrames();
  bool was_running = true;
  EXPECT_EQ(Stop(was_running), "");
  EXPECT_FALSE(was_running);
  EXPECT_NE(PopVideoFrame(), nullptr);
  EXPECT_NE(PopAudioFrame(), nullptr);
}

TEST_F(StopProtocolTest, TasksAreWokenAndJoinedEvenIfTheFlagIsClear) {
  running_ = false;
  std::promise<void> woken;
  std::promise<void> begun;
  std::atomic<bool> ended{false};
  pool_.AddTask(gate_.Admit([&] {
    begun.set_value();
    woken.get_future().wait_for(kTestLimit);
    for (int i = 0; i < 1000; ++i) std::this_thread::yield();  // a stop that joins waits for this
    ended = true;
  }));
  begun.get_future().wait();
  bool was_woken = false;
  wake_ = [&] {
    woken.set_value();
    was_woken = true;
  };
  EXPECT_FALSE(StopPipeline(Pipeline()));
  EXPECT_TRUE(was_woken);
  EXPECT_TRUE(ended.load());
  if (!was_woken) woken.set_value();  // the task must end before the objects it uses
  pool_.Stop();
}

// The only worker runs the first task while two tasks wait: an admitted task, and a task without
// admission, which shows when the admitted task has been removed from the pool.
TEST_F(StopProtocolTest, AdmittedTaskThatHasNotStartedNeverRuns) {
  std::promise<void> release;
  std::promise<void> begun;
  std::promise<void> ran;
  std::atomic<bool> has_run{false};
  pool_.AddTask(gate_.Admit([&] {
    begun.set_value();
    release.get_future().wait_for(kTestLimit);
  }));
  pool_.AddTask(gate_.Admit([&] { has_run = true; }));
  pool_.AddTask([&] { ran.set_value(); });
  begun.get_future().wait();
  wake_ = [&] {
    release.set_value();
    EXPECT_EQ(ran.get_future().wait_for(kTestLimit), std::future_status::ready);
  };
  EXPECT_TRUE(Stop());
  EXPECT_FALSE(has_run.load()) << "the gate was closed too late";
}

TEST_F(StopProtocolTest, AdmittedTaskLeftInThePoolDoesNotRunAfterTheNextStart) {
  std::promise<void> woken;
  std::promise<void> begun;
  std::atomic<bool> has_run{false};
  pool_.AddTask(gate_.Admit([&] {
    begun.set_value();
    woken.get_future().wait_for(kTestLimit);
  }));
  begun.get_future().wait();
  wake_ = [&] { woken.set_value(); };
  pool_.AddTask(gate_.Admit([&] { has_run = true; }));
  EXPECT_TRUE(Stop());
  std::promise<void> next;
  pool_.Start();
  pool_.AddTask(gate_.Admit([&] { next.set_value(); }));
  EXPECT_EQ(next.get_future().wait_for(kTestLimit), std::future_status::ready);
  EXPECT_FALSE(has_run.load());
}

TEST_F(StopProtocolTest, SecondStopReturnsFalse) {
  EXPECT_TRUE(Stop());
  EXPECT_FALSE(Stop());
}

}  // namespace
