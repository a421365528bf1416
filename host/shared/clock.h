// The host's clock: milliseconds since it was created. A program has one clock, so times of
// different threads and repeated runs can be compared. Hosts read the time, pause and wait only
// through it, so that tests can replace it. Safe to call from any thread.
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
  // Sleeps briefly. For polling loops.
  virtual void Pause() = 0;
  // Waits until `met` returns true or the time `until_ms` is reached. `lock` holds the mutex that
  // guards the state read by `met`; `changed` is notified when that state changes. Returns the last
  // result of `met`.
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
