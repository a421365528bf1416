#include "common/clock.h"

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <future>

#include "tests/support/simulated_clock.h"

namespace stream {
namespace {

using std::chrono::hours;
using std::chrono::milliseconds;

TEST(ClockTest, WaitInTheSystemClockEndsAfterItsLimit) {
  Mutex mutex;
  std::condition_variable condition;
  const MutexLock lock(mutex);
  EXPECT_FALSE(CurrentClock().WaitFor(condition, mutex, milliseconds(2), [] { return false; }));
  auto other_thread = std::async(std::launch::async, [&mutex] { return mutex.try_lock(); });
  EXPECT_FALSE(other_thread.get());  // the mutex is still held
}

TEST(ClockTest, ReplacementIsInUseUntilItIsDestroyed) {
  Clock* const system = &CurrentClock();
  {
    SimulatedClock simulated;
    EXPECT_EQ(&CurrentClock(), &simulated);
  }
  EXPECT_EQ(&CurrentClock(), system);
}

TEST(SimulatedClockTest, TimeDoesNotChangeUntilAdvanced) {
  SimulatedClock clock;
  clock.SetWallTime(1'000);
  const Clock::TimePoint before = clock.Now();
  EXPECT_EQ(clock.Now(), before);
  clock.Advance(hours(24));
  EXPECT_EQ(clock.Now() - before, hours(24));
  EXPECT_EQ(clock.WallTime(), 1'000 + 24 * 3'600);
}

TEST(SimulatedClockTest, SleepEndsWhenItsTimeIsReached) {
  SimulatedClock clock;
  std::atomic<bool> awake{false};
  auto sleeper = std::async(std::launch::async, [&] {
    SleepFor(milliseconds(100));
    awake = true;
  });
  ASSERT_TRUE(clock.WaitForWaiters(1));
  clock.Advance(milliseconds(99));
  EXPECT_EQ(clock.Waiting(), 1U);
  EXPECT_FALSE(awake);
  clock.Advance(milliseconds(1));
  sleeper.get();
  EXPECT_EQ(clock.Waiting(), 0U);
  EXPECT_EQ(clock.Sleeps(milliseconds(100)), 1U);
}

TEST(SimulatedClockTest, WaitEndsAtItsLimitOrWhenItsConditionIsMet) {
  SimulatedClock clock;
  Mutex mutex;
  std::condition_variable condition;
  bool met = false;  // guarded by mutex
  const auto wait = [&] {
    const MutexLock lock(mutex);
    return clock.WaitFor(condition, mutex, hours(1), [&] { return met; });
  };
  auto late = std::async(std::launch::async, wait);
  ASSERT_TRUE(clock.WaitForWaiters(1));
  clock.Advance(hours(1));
  EXPECT_FALSE(late.get());

  auto in_time = std::async(std::launch::async, wait);
  ASSERT_TRUE(clock.WaitForWaiters(1));
  {
    const MutexLock lock(mutex);
    met = true;
  }
  condition.notify_all();
  EXPECT_TRUE(in_time.get());
}

TEST(SimulatedClockTest, AdvanceUntilStopsAsSoonAsTheConditionIsMet) {
  SimulatedClock clock;
  std::atomic<int> turns{0};
  auto loop = std::async(std::launch::async, [&] {
    while (turns < 50) {
      SleepFor(milliseconds(10));
      ++turns;
    }
  });
  EXPECT_TRUE(clock.AdvanceUntil([&] { return turns >= 20; }, 1, milliseconds(10)));
  EXPECT_EQ(clock.Elapsed(), milliseconds(200));
  clock.Release();
  loop.get();
  EXPECT_EQ(clock.Elapsed(), milliseconds(490)) << "the sleep in progress at Release takes no time";
}

}  // namespace
}  // namespace stream
