// The component's source of time. Every query of the time, every sleep and every wait with a time
// limit uses the current clock, and so does every wait without a limit that a test has to observe.
// The current clock is the system's, unless a test replaces it with one that the test moves.
//
// Threads: all functions may be called from any thread.
#ifndef COMMON_CLOCK_H_
#define COMMON_CLOCK_H_

#include <chrono>
#include <condition_variable>
#include <ctime>
#include <functional>

#include "platform/mutex.h"

namespace stream {

class Clock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::milliseconds;

  // Monotonic time.
  virtual TimePoint Now() = 0;

  // Wall-clock time in seconds since 1970.
  virtual std::time_t WallTime() = 0;

  // Blocks for about `duration`.
  virtual void Sleep(Duration duration) = 0;

  // Waits on `condition` until `met` returns true or `limit` has passed. `mutex` is held in every
  // call of `met`; annotate a lambda with REQUIRES(mutex). Returns whether `met` is true.
  virtual bool WaitFor(std::condition_variable& condition, Mutex& mutex, Duration limit,
                       const std::function<bool()>& met) REQUIRES(mutex) = 0;

  // As WaitFor, without a limit.
  virtual void Wait(std::condition_variable& condition, Mutex& mutex,
                    const std::function<bool()>& met) REQUIRES(mutex) = 0;

 protected:
  ~Clock() = default;
};

Clock& CurrentClock();

// Makes `clock` the current clock and borrows it; null restores the system's clock. For tests: no
// thread may be inside a call of the previous clock.
void UseClock(Clock* clock);

inline void SleepFor(Clock::Duration duration) { CurrentClock().Sleep(duration); }

}  // namespace stream

#endif  // COMMON_CLOCK_H_
