#include "common/thread_pool.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <new>
#include <stdexcept>
#include <string>
#include <thread>

#include "common/task_gate.h"
#include "tests/support/mp4_memory.h"
#include "tests/support/test_limit.h"

namespace stream {
namespace {

// Counts the tasks inside and holds them until it is opened.
class Gate {
 public:
  void Enter() {
    std::unique_lock lock(mutex_);
    ++inside_;
    changed_.notify_all();
    changed_.wait(lock, [this] { return open_; });
  }
  void Open() {
    const std::lock_guard lock(mutex_);
    open_ = true;
    changed_.notify_all();
  }
  bool WaitForInside(int count) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, kTestLimit, [&] { return inside_ == count; });
  }
  int Inside() {
    const std::lock_guard lock(mutex_);
    return inside_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int inside_ = 0;
  bool open_ = false;
};

TEST(ThreadPoolTest, NewPoolRunsTasksAtOnce) {
  Gate gate;
  CThreadPool pool(2);
  pool.AddTask([&] { gate.Enter(); });
  EXPECT_TRUE(gate.WaitForInside(1));
  gate.Open();
}

TEST(ThreadPoolTest, TaskAddedWhileStoppedRunsAfterTheNextStart) {
  Gate gate;
  CThreadPool pool(2);
  pool.Stop();
  pool.AddTask([&] { gate.Enter(); });
  EXPECT_EQ(gate.Inside(), 0);
  pool.Start();
  EXPECT_TRUE(gate.WaitForInside(1));
  gate.Open();
}

TEST(ThreadPoolTest, StopWakesIdleWorkersAndASecondStopDoesNothing) {
  CThreadPool pool(8);
  pool.Stop();
  pool.Stop();
}

TEST(ThreadPoolTest, StopReturnsOnlyAfterTheRunningTask) {
  Gate gate;
  CThreadPool pool(2);
  std::atomic<bool> stopped{false};
  std::atomic<bool> stopped_before_end{true};
  pool.AddTask([&] {
    gate.Enter();
    stopped_before_end = stopped.load();
  });
  ASSERT_TRUE(gate.WaitForInside(1));
  std::thread stopper([&] {
    pool.Stop();
    stopped = true;
  });
  std::this_thread::yield();
  gate.Open();
  stopper.join();
  EXPECT_FALSE(stopped_before_end);
}

TEST(ThreadPoolTest, FiveLongTasksOnEightThreadsRunConcurrently) {
  Gate gate;
  CThreadPool pool(8);
  for (int i = 0; i < 5; ++i) pool.AddTask([&] { gate.Enter(); });
  EXPECT_TRUE(gate.WaitForInside(5));
  gate.Open();
}

TEST(ThreadPoolTest, NinthLongTaskWaitsUntilOneEnds) {
  Gate first;
  Gate rest;
  std::atomic<bool> first_may_end{false};
  std::atomic<int> begun_afterwards{0};
  CThreadPool pool(8);
  pool.AddTask([&] { first.Enter(); });
  for (int i = 0; i < 8; ++i) {
    pool.AddTask([&] {
      if (first_may_end) ++begun_afterwards;
      rest.Enter();
    });
  }
  ASSERT_TRUE(first.WaitForInside(1));
  ASSERT_TRUE(rest.WaitForInside(7));
  first_may_end = true;
  first.Open();
  EXPECT_TRUE(rest.WaitForInside(8));
  EXPECT_EQ(begun_afterwards, 1);
  rest.Open();
}

TEST(ThreadPoolTest, TasksStartInTheOrderOfArrival) {
  std::mutex mutex;
  std::string order;
  Gate gate;
  CThreadPool pool(1);
  for (const char letter : {'a', 'b', 'c'}) {
    pool.AddTask([&, letter] {
      const std::lock_guard lock(mutex);
      order += letter;
    });
  }
  pool.AddTask([&] { gate.Enter(); });
  ASSERT_TRUE(gate.WaitForInside(1));
  EXPECT_EQ(order, "abc");
  gate.Open();
}

TEST(TaskGateTest, TaskAdmittedBeforeTheGateClosedDoesNothing) {
  TaskGate gate;
  int runs = 0;
  const CThreadPool::Task stale = gate.Admit([&] { ++runs; });
  gate.Close();
  const CThreadPool::Task fresh = gate.Admit([&] { runs += 10; });
  stale();
  fresh();
  EXPECT_EQ(runs, 10);
}

// The console output of a task that throws.
template <typename Exception>
std::string LineOfATaskThatThrows(const Exception& exception) {
  TaskGate gate;
  testing::internal::CaptureStdout();
  gate.Admit([&] { throw exception; })();
  return testing::internal::GetCapturedStdout();
}

TEST(TaskGateTest, TaskThatThrowsEndsAndIsLogged) {
  EXPECT_EQ(LineOfATaskThatThrows(std::bad_alloc()), "a task ended: out of memory\n");
  EXPECT_EQ(LineOfATaskThatThrows(std::runtime_error("no disk")), "a task ended: no disk\n");
  EXPECT_EQ(LineOfATaskThatThrows(1), "a task ended: unknown\n");
}

TEST(TaskGateTest, LongTextOfAnExceptionIsTruncated) {
  const std::string text(1'000, 'x');
  EXPECT_EQ(LineOfATaskThatThrows(std::runtime_error(text)),
            "a task ended: " + text.substr(0, 400) + "\n");
}

#ifdef STREAM_TEST_FAILING_NEW
TEST(TaskGateTest, TaskThatRanOutOfMemoryIsLoggedWithoutAllocation) {
  TaskGate gate;
  const CThreadPool::Task task = gate.Admit([] { throw std::bad_alloc(); });
  testing::internal::CaptureStdout();
  {
    const FailingNew nothing_left(0);
    task();
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "a task ended: out of memory\n");
}
#endif

}  // namespace
}  // namespace stream
