// SimulatedClock: a clock for the component whose time stands still until the test moves it. Hours
// pass in the time that the work of the component takes, and a test knows who is waiting for what.
#ifndef TESTS_SUPPORT_SIMULATED_CLOCK_H_
#define TESTS_SUPPORT_SIMULATED_CLOCK_H_

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <functional>
#include <list>
#include <map>
#include <mutex>

#include "common/clock.h"

// In use from its construction to its destruction. Threads may sleep and wait in it only in
// between: stop every pipeline before it is destroyed, after Release. Safe from any thread.
class SimulatedClock final : public Clock {
 public:
  SimulatedClock();
  ~SimulatedClock();
  SimulatedClock(const SimulatedClock&) = delete;
  SimulatedClock& operator=(const SimulatedClock&) = delete;

  TimePoint Now() override;
  std::time_t WallTime() override;  // what was set, and the time passed since
  void Sleep(Duration duration) override;
  bool WaitFor(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
               Duration limit, const std::function<bool()>& met) override;
  void Wait(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
            const std::function<bool()>& met) override;

  // The time passed since the construction.
  Duration Elapsed() const { return Duration(elapsed_.load()); }

  void SetWallTime(std::time_t time) { wall_time_ = time; }

  // Moves the time and wakes the threads that are due.
  void Advance(Duration duration);

  // Threads that sleep or wait in the clock and are not due yet. One that waits on a condition has
  // found it not to be met.
  std::size_t Waiting() const;

  // Waits until so many threads sleep or wait, which is how a test knows that the component has
  // done all it can do at this time. False if that does not happen within the time limit of a test.
  bool AwaitWaiting(std::size_t count);

  // Moves the time by `step` until `met`, each time once `count` threads sleep or wait. False if
  // neither happens within the time limit of a test.
  bool AdvanceUntil(const std::function<bool()>& met, std::size_t count, Duration step);

  // From now on no thread sleeps: a sleep moves the time itself. For the end of a test.
  void Release();

  // Has sleeps of up to that length take real time and no simulated time. For tests in which the
  // loops of the component run on while the time stands still for what waits longer.
  void SetRealSleeps(Duration longest) { longest_real_sleep_ = longest; }

  // How often each kind of call has begun.
  std::size_t Sleeps() const;
  std::size_t Sleeps(Duration duration) const;  // those of exactly that length
  std::size_t Looks() const { return looks_.load(); }

  // How often those who wait on a condition have found it not to be met.
  std::size_t UnmetChecks() const { return unmet_checks_.load(); }

 private:
  struct Waiter {
    std::int64_t due;                    // in milliseconds since the construction
    std::condition_variable* condition;  // null for a sleeper
    std::mutex* mutex;                   // that of `condition`
  };
  using Waiters = std::list<Waiter>;

  bool WaitUntilDue(Duration limit, std::condition_variable& condition,
                    std::unique_lock<std::mutex>& lock, const std::function<bool()>& met);
  bool IsDue(const Waiter& waiter) const {
    return released_.load() || elapsed_.load() >= waiter.due;
  }
  Waiters::iterator Enter(const Waiter& waiter);
  void Leave(Waiters::iterator waiter);
  void WakeThoseThatAreDue();
  bool AwaitWaitingOr(const std::function<bool()>& met, std::size_t count);
  std::size_t WaitingLocked() const;  // with mutex_ held

  const TimePoint start_;
  std::atomic<std::int64_t> elapsed_{0};  // milliseconds
  std::atomic<std::time_t> wall_time_{0};
  std::atomic<bool> released_{false};
  std::atomic<Duration> longest_real_sleep_{Duration::zero()};
  std::atomic<std::size_t> looks_{0};
  std::atomic<std::size_t> unmet_checks_{0};

  mutable std::mutex mutex_;
  std::condition_variable moved_;           // the time, for those who sleep
  std::condition_variable changed_;         // more wait, for the test
  Waiters waiters_;                         // guarded by mutex_
  std::map<Duration, std::size_t> sleeps_;  // guarded by mutex_
};

#endif  // TESTS_SUPPORT_SIMULATED_CLOCK_H_
