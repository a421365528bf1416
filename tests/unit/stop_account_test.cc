#include "tests/support/stop_account.h"

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

class StopAccountTest : public testing::Test {
 protected:
  std::atomic<bool> running_{true};
  StopSleepRecorder account_{[this] { return running_.load(); }};
};

TEST_F(StopAccountTest, SleepsBeforeTheStopDoNotCount) {
  for (int i = 0; i < 3; ++i) SleepFor(milliseconds(2));
  running_ = false;
  EXPECT_TRUE(account_.WasPrompt(milliseconds(1)));
  EXPECT_EQ(account_.Sleeps(), 3U);
}

TEST_F(StopAccountTest, EachThreadMayBeginOneSleepAfterTheStop) {
  running_ = false;
  std::thread first(SleepFor, milliseconds(1));
  std::thread second(SleepFor, milliseconds(1));
  SleepFor(milliseconds(1));
  first.join();
  second.join();
  EXPECT_TRUE(account_.WasPrompt(milliseconds(1)));
}

TEST_F(StopAccountTest, SecondSleepOfAThreadAfterTheStopIsNotPrompt) {
  running_ = false;
  SleepFor(milliseconds(1));
  SleepFor(milliseconds(1));
  EXPECT_FALSE(account_.WasPrompt(milliseconds(1)));
  account_.Forget();
  EXPECT_TRUE(account_.WasPrompt(milliseconds(1)));
}

TEST_F(StopAccountTest, SleepAfterTheStopAboveThePaceIsNotPrompt) {
  running_ = false;
  SleepFor(milliseconds(2));
  EXPECT_FALSE(account_.WasPrompt(milliseconds(1)));
  EXPECT_TRUE(account_.WasPrompt(milliseconds(2)));
}

TEST_F(StopAccountTest, WaitEndsByItsConditionAndNotByItsLimit) {
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
  EXPECT_TRUE(account_.WasPrompt(milliseconds(1)));
}

TEST_F(StopAccountTest, WaitsMayEndAtOnce) {
  Mutex mutex;
  std::condition_variable condition;
  const MutexLock lock(mutex);
  account_.EndWaitsImmediately(true);
  EXPECT_FALSE(CurrentClock().WaitFor(condition, mutex, hours(1), [] { return false; }));
}

TEST_F(StopAccountTest, SleepsCanBeAwaited) {
  auto sleeper = std::async(std::launch::async, [] {
    for (int i = 0; i < 5; ++i) SleepFor(milliseconds(1));
  });
  EXPECT_TRUE(account_.AwaitSleeps(5));
  sleeper.get();
}

}  // namespace
}  // namespace stream
