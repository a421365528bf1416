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

  bool WaitFor(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
               Duration limit, const std::function<bool()>& met) override {
    return condition.wait_for(lock, limit, met);
  }

  void Wait(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
            const std::function<bool()>& met) override {
    condition.wait(lock, met);
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
