#include "common/clock.h"

#include <atomic>

#include "common/never_destroyed.h"
#include "platform/sleep.h"

namespace stream {
namespace {

class SystemClock final : public Clock {
 public:
  TimePoint Now() override { return std::chrono::steady_clock::now(); }

  std::time_t WallTime() override { return std::time(nullptr); }

  void Sleep(Duration duration) override {
    platform::SleepMilliseconds(static_cast<unsigned>(duration.count()));
  }

  bool WaitFor(std::condition_variable& condition, Mutex& mutex, Duration limit,
               const std::function<bool()>& met) REQUIRES(mutex) override {
    return mutex.WithLock(
        [&](std::unique_lock<std::mutex>& lock) { return condition.wait_for(lock, limit, met); });
  }

  void Wait(std::condition_variable& condition, Mutex& mutex, const std::function<bool()>& met)
      REQUIRES(mutex) override {
    WaitOn(condition, mutex, met);
  }
};

struct Clocks {
  SystemClock system;
  std::atomic<Clock*> current{&system};
};

// Created at its first use, which may be in the constructor of another static object.
Clocks& AllClocks() {
  static NeverDestroyed<Clocks> clocks;
  return *clocks;
}

}  // namespace

Clock& CurrentClock() { return *AllClocks().current.load(std::memory_order_acquire); }

void UseClock(Clock* clock) {
  Clocks& clocks = AllClocks();
  clocks.current.store(clock == nullptr ? &clocks.system : clock, std::memory_order_release);
}

}  // namespace stream
