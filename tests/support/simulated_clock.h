// SimulatedClock: a clock for the component whose time advances only when the test says so. Hours
// of simulated time take only as long as the component's work, and a test can see how many threads
// are waiting.
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

namespace stream {

// It is the component's clock from its construction to its destruction. Threads may sleep and wait
// in it only in between: before it is destroyed, call Release and stop every pipeline. Safe from
// any thread.
class SimulatedClock final : public Clock {
 public:
  SimulatedClock();
  ~SimulatedClock();
  SimulatedClock(const SimulatedClock&) = delete;
  SimulatedClock& operator=(const SimulatedClock&) = delete;

  TimePoint Now() override;
  std::time_t WallTime() override;  // the time set, plus the simulated time since the construction
  void Sleep(Duration duration) override;
  bool WaitFor(std::condition_variable& condition, Mutex& mutex, Duration limit,
               const std::function<bool()>& met) REQUIRES(mutex) override;
  void Wait(std::condition_variable& condition, Mutex& mutex, const std::function<bool()>& met)
      REQUIRES(mutex) override;

  // The simulated time since the construction.
  Duration Elapsed() const { return Duration(elapsed_.load()); }

  void SetWallTime(std::time_t time) { wall_time_ = time; }

  // Advances the time and wakes the threads that are due.
  void Advance(Duration duration);

  // The number of threads that sleep or wait in the clock and are not due yet. Those that wait on a
  // condition have found it false.
  std::size_t Waiting() const;

  // Waits until at least `count` threads sleep or wait: then the component has done all it can do
  // at this time. False if the time limit of a test expires first.
  bool WaitForWaiters(std::size_t count);

  // Advances the time by `step` until `met` is true, each time as soon as `count` threads sleep or
  // wait. False if the time limit of a test expires first.
  bool AdvanceUntil(const std::function<bool()>& met, std::size_t count, Duration step);

  // From now on no thread sleeps: each sleep advances the time instead. For the end of a test.
  void Release();

  // Makes sleeps of up to this length take real time and no simulated time. For tests in which the
  // polling loops of the component keep running while the time stands still for longer waits.
  void SetRealSleeps(Duration longest) { longest_real_sleep_ = longest; }

  // The number of sleeps that have begun.
  std::size_t Sleeps() const;
  std::size_t Sleeps(Duration duration) const;  // only those of exactly this length
  std::size_t NowCalls() const { return now_calls_.load(); }

  // The number of times that waiting threads have found their condition false.
  std::size_t UnmetChecks() const { return unmet_checks_.load(); }

 private:
  struct Waiter {
    std::int64_t due;                    // in milliseconds since the construction
    std::condition_variable* condition;  // null for a sleeping thread
    Mutex* mutex;                        // the mutex of `condition`
  };
  using Waiters = std::list<Waiter>;

  bool WaitUntilDue(Duration limit, std::condition_variable& condition, Mutex& mutex,
                    const std::function<bool()>& met) REQUIRES(mutex);
  bool IsDue(const Waiter& waiter) const {
    return released_.load() || elapsed_.load() >= waiter.due;
  }
  Waiters::iterator Enter(const Waiter& waiter);
  void Leave(Waiters::iterator waiter);
  void WakeDueThreads();
  bool WaitForWaitersOr(const std::function<bool()>& met, std::size_t count);
  std::size_t WaitingLocked() const;  // requires mutex_

  const TimePoint start_;
  std::atomic<std::int64_t> elapsed_{0};  // milliseconds
  std::atomic<std::time_t> wall_time_{0};
  std::atomic<bool> released_{false};
  std::atomic<Duration> longest_real_sleep_{Duration::zero()};
  std::atomic<std::size_t> now_calls_{0};
  std::atomic<std::size_t> unmet_checks_{0};

  mutable std::mutex mutex_;
  std::condition_variable moved_;           // notified when the time advances, for sleeping threads
  std::condition_variable changed_;         // notified when another thread waits, for the test
  Waiters waiters_;                         // guarded by mutex_
  std::map<Duration, std::size_t> sleeps_;  // guarded by mutex_
};

}  // namespace stream

#endif  // TESTS_SUPPORT_SIMULATED_CLOCK_H_
