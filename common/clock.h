// The time as the component sees it: every look at the time, every sleep, every wait with a time
// limit, and those without one that a test has to see, go through the clock in use. It is the
// system's, unless a test replaces it by one whose time the test moves.
//
// Threads: all functions may be called from any thread.
#ifndef COMMON_CLOCK_H_
#define COMMON_CLOCK_H_

#include <chrono>
#include <condition_variable>
#include <ctime>
#include <functional>
#include <mutex>

class Clock {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using Duration = std::chrono::milliseconds;

  // Never runs backwards.
  virtual TimePoint Now() = 0;

  // Seconds since 1970, as the user's clock shows them.
  virtual std::time_t WallTime() = 0;

  // Returns after about `duration`.
  virtual void Sleep(Duration duration) = 0;

  // Waits on `condition`, with `lock` held before and after, until `met` or until `limit` has
  // passed. Returns whether it is met.
  virtual bool WaitFor(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                       Duration limit, const std::function<bool()>& met) = 0;

  // The same without a limit.
  virtual void Wait(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                    const std::function<bool()>& met) = 0;

 protected:
  ~Clock() = default;
};

// The clock in use.
Clock& CurrentClock();

// Has the component use `clock`, which is borrowed, or for null the system's clock again. For
// tests: no thread may be in the clock that was in use.
void UseClock(Clock* clock);

inline void SleepFor(Clock::Duration duration) { CurrentClock().Sleep(duration); }

#endif  // COMMON_CLOCK_H_
