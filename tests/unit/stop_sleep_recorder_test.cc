#include "tests/support/stop_sleep_recorder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <future>
#include <thread>
#include <utility>

namespace stream {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

class StopSleepRecorderTest : public testing::Test {
 protected:
  std::atomic<bool> running_{true};
  StopSleepRecorder sleep_recorder_{[this] { return running_.load(); }};
};

TEST_F(StopSleepRecorderTest, SleepsBeforeTheStopDoNotCount) {
  for (int i = 0; i < 3; ++i) SleepFor(milliseconds(2));
  running_ = false;
  EXPECT_TRUE(sleep_recorder_.WasPrompt(milliseconds(1)));
  EXPECT_EQ(sleep_recorder_.Sleeps(), 3U);
}

TEST_F(StopSleepRecorderTest, EachThreadMayBeginOneSleepAfterTheStop) {
  running_ = false;
  std::thread first(SleepFor, milliseconds(1));
  std::thread second(SleepFor, milliseconds(1));
  SleepFor(milliseconds(1));
  first.join();
  second.join();
  EXPECT_TRUE(sleep_recorder_.WasPrompt(milliseconds(1)));
}

TEST_F(StopSleepRecorderTest, SecondSleepOfAThreadAfterTheStopIsNotPrompt) {
  running_ = false;
  SleepFor(milliseconds(1));
  SleepFor(milliseconds(1));
  EXPECT_FALSE(sleep_recorder_.WasPrompt(milliseconds(1)));
  sleep_recorder_.Forget();
  EXPECT_TRUE(sleep_recorder_.WasPrompt(milliseconds(1)));
}

TEST_F(StopSleepRecorderTest, SleepAfterTheStopAboveThePaceIsNotPrompt) {
  running_ = false;
  SleepFor(milliseconds(2));
  EXPECT_FALSE(sleep_recorder_.WasPrompt(milliseconds(1)));
  EXPECT_TRUE(sleep_recorder_.WasPrompt(milliseconds(2)));
}

TEST_F(StopSleepRecorderTest, WaitEndsByItsConditionAndNotByItsLimit) {
  Mutex mutex;
  std::condition_variable condition;
  std::promise<void> waiting;
  auto waited = std::async(std::launch::async, [&] {
    const MutexLock lock(mutex);
    return CurrentClock().WaitFor(condition, mutex, milliseconds(0), [&, first = true]() mutable {
      if (std::exchange(first, false)) waiting.set_value();
      return !running_.load();
    });
  });
  waiting.get_future().wait();
  { const MutexLock lock(mutex); }  // the thread waits now
  running_ = false;
  condition.notify_all();
  EXPECT_TRUE(waited.get());
  EXPECT_TRUE(sleep_recorder_.WasPrompt(milliseconds(1)));
}

TEST_F(StopSleepRecorderTest, WaitsMayEndAtOnce) {
  Mutex mutex;
  std::condition_variable condition;
  const MutexLock lock(mutex);
  sleep_recorder_.EndWaitsImmediately(true);
  EXPECT_FALSE(CurrentClock().WaitFor(condition, mutex, hours(1), [] { return false; }));
}

TEST_F(StopSleepRecorderTest, SleepsCanBeAwaited) {
  auto sleeper = std::async(std::launch::async, [] {
    for (int i = 0; i < 5; ++i) SleepFor(milliseconds(1));
  });
  EXPECT_TRUE(sleep_recorder_.WaitForSleeps(5));
  sleeper.get();
}

}  // namespace
}  // namespace stream
