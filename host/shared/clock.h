// The host's time: milliseconds since the clock was made. All of a program run has one clock, so
// times of different threads and of repeated runs can be compared. Hosts look at the time, pause
// and wait for a time through it alone, so that tests can replace it. Safe from any thread.
#ifndef HOST_SHARED_CLOCK_H_
#define HOST_SHARED_CLOCK_H_

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

namespace host {

class Clock {
 public:
  virtual double NowMs() const = 0;
  // Lets a little time go by: what a loop does between two looks.
  virtual void Pause() = 0;
  // Waits until `met` holds or the time `until_ms` is reached. `lock` holds the mutex that guards
  // what `met` looks at, and `changed` is notified when that changes. Returns what `met` returned
  // last.
  virtual bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                         double until_ms, const std::function<bool()>& met) const = 0;

 protected:
  ~Clock() = default;
};

class SteadyClock final : public Clock {
 public:
  double NowMs() const override {
    return Milliseconds(std::chrono::steady_clock::now() - start_).count();
  }
  void Pause() override { std::this_thread::sleep_for(std::chrono::milliseconds(10)); }
  bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                 double until_ms, const std::function<bool()>& met) const override {
    const auto since_start =
        std::chrono::duration_cast<std::chrono::steady_clock::duration>(Milliseconds(until_ms));
    return changed.wait_until(lock, start_ + since_start, met);
  }

 private:
  using Milliseconds = std::chrono::duration<double, std::milli>;

  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
};

}  // namespace host

#endif  // HOST_SHARED_CLOCK_H_
