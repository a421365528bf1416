// A host clock that stands still until a test advances it.
#ifndef TESTS_HOST_SIMULATED_CLOCK_H_
#define TESTS_HOST_SIMULATED_CLOCK_H_

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <utility>

#include "host/shared/clock.h"

namespace host {

// Any thread may read the time and wait for it. Only one thread advances it, adds calls and runs
// them.
class SimulatedClock : public Clock {
 public:
  virtual ~SimulatedClock() = default;

  double NowMs() const override { return now_ms_.load(); }
  void Pause() override { Advance(10); }
  bool WaitUntil(std::unique_lock<std::mutex>& lock, std::condition_variable& changed,
                 double until_ms, const std::function<bool()>& met) const override {
    // Polls, because the clock does not know who waits.
    while (!met() && NowMs() < until_ms) changed.wait_for(lock, std::chrono::milliseconds(1));
    return met();
  }

  void Advance(double ms) { AdvanceTo(NowMs() + ms); }
  // Runs the calls that are due until then, each at its time and in the order of their times.
  void AdvanceTo(double ms) {
    while (!calls_.empty() && calls_.begin()->first <= ms) {
      const auto next = calls_.extract(calls_.begin());
      now_ms_ = std::max(NowMs(), next.key());
      next.mapped()();
    }
    now_ms_ = std::max(NowMs(), ms);
  }

  // A call may add further calls, but must not advance the time.
  void CallAt(double ms, std::function<void()> call) { calls_.emplace(ms, std::move(call)); }

 private:
  std::atomic<double> now_ms_{0};
  std::multimap<double, std::function<void()>> calls_;
};

}  // namespace host

#endif  // TESTS_HOST_SIMULATED_CLOCK_H_
