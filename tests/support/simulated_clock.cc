#include "tests/support/simulated_clock.h"

#include <algorithm>
#include <iterator>
#include <thread>
#include <vector>

#include "platform/sleep.h"
#include "tests/support/test_limit.h"

namespace stream {
namespace {

void WaitOnce(std::condition_variable& condition, Mutex& mutex) REQUIRES(mutex) {
  mutex.WithLock([&condition](std::unique_lock<std::mutex>& lock) { condition.wait(lock); });
}

}  // namespace

// Starts at 1000 hours, so that subtractions do not go below zero.
SimulatedClock::SimulatedClock() : start_(std::chrono::hours(1000)) { UseClock(this); }

SimulatedClock::~SimulatedClock() { UseClock(nullptr); }

Clock::TimePoint SimulatedClock::Now() {
  ++now_calls_;
  return start_ + Elapsed();
}

std::time_t SimulatedClock::WallTime() {
  return wall_time_.load() + std::chrono::duration_cast<std::chrono::seconds>(Elapsed()).count();
}

SimulatedClock::Waiters::iterator SimulatedClock::Enter(const Waiter& waiter) {
  waiters_.push_back(waiter);
  changed_.notify_all();
  return std::prev(waiters_.end());
}

void SimulatedClock::Leave(Waiters::iterator waiter) { waiters_.erase(waiter); }

void SimulatedClock::Sleep(Duration duration) {
  std::unique_lock lock(mutex_);
  ++sleeps_[duration];
  if (duration <= longest_real_sleep_.load()) {
    lock.unlock();
    platform::SleepMilliseconds(static_cast<unsigned>(duration.count()));
    return;
  }
  if (released_.load()) {
    elapsed_ += duration.count();
    lock.unlock();
    std::this_thread::yield();
    return;
  }
  const auto self = Enter({elapsed_.load() + duration.count(), nullptr, nullptr});
  moved_.wait(lock, [&] { return IsDue(*self); });
  Leave(self);
}

bool SimulatedClock::WaitFor(std::condition_variable& condition, Mutex& mutex, Duration limit,
                             const std::function<bool()>& met) {
  return WaitUntilDue(limit, condition, mutex, [&] {
    const bool is_met = met();
    if (!is_met) ++unmet_checks_;
    return is_met;
  });
}

void SimulatedClock::Wait(std::condition_variable& condition, Mutex& mutex,
                          const std::function<bool()>& met) {
  constexpr Duration kForEver = std::chrono::hours(1'000'000);
  while (!WaitFor(condition, mutex, kForEver, met))
    WaitOnce(condition, mutex);  // WaitFor returns at once after Release
}

// Checks `met` before the thread is counted as waiting.
bool SimulatedClock::WaitUntilDue(Duration limit, std::condition_variable& condition, Mutex& mutex,
                                  const std::function<bool()>& met) {
  if (met()) return true;
  Waiters::iterator self;
  {
    const std::lock_guard own(mutex_);
    self = Enter({elapsed_.load() + limit.count(), &condition, &mutex});
  }
  bool is_met = false;
  while (!is_met && !IsDue(*self)) {
    WaitOnce(condition, mutex);
    is_met = met();
  }
  const std::lock_guard own(mutex_);
  Leave(self);
  return is_met;
}

void SimulatedClock::Advance(Duration duration) {
  elapsed_ += duration.count();
  WakeDueThreads();
}

void SimulatedClock::Release() {
  released_ = true;
  WakeDueThreads();
}

// The condition variables live as long as the component, so they may be notified after their
// waiters have left.
void SimulatedClock::WakeDueThreads() {
  std::vector<Waiter> due;
  {
    const std::lock_guard lock(mutex_);
    for (const Waiter& waiter : waiters_) {
      if (waiter.condition != nullptr && IsDue(waiter)) due.push_back(waiter);
    }
  }
  moved_.notify_all();
  for (const Waiter& waiter : due) {
    { const std::lock_guard lock(*waiter.mutex); }  // no thread is between its check and its wait
    waiter.condition->notify_all();
  }
}

std::size_t SimulatedClock::Waiting() const {
  const std::lock_guard lock(mutex_);
  return WaitingLocked();
}

std::size_t SimulatedClock::WaitingLocked() const {
  return static_cast<std::size_t>(std::count_if(
      waiters_.begin(), waiters_.end(), [this](const Waiter& waiter) { return !IsDue(waiter); }));
}

bool SimulatedClock::WaitForWaiters(std::size_t count) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, kTestLimit, [&] { return WaitingLocked() >= count; });
}

bool SimulatedClock::AdvanceUntil(const std::function<bool()>& met, std::size_t count,
                                  Duration step) {
  const auto limit = std::chrono::steady_clock::now() + kTestLimit;
  while (WaitForWaitersOr(met, count)) {
    if (met()) return true;
    if (std::chrono::steady_clock::now() > limit) return false;
    Advance(step);
  }
  return false;
}

// Checks `met` every millisecond, since nothing notifies the clock of it.
bool SimulatedClock::WaitForWaitersOr(const std::function<bool()>& met, std::size_t count) {
  const auto limit = std::chrono::steady_clock::now() + kTestLimit;
  std::unique_lock lock(mutex_);
  while (!changed_.wait_for(lock, std::chrono::milliseconds(1),
                            [&] { return WaitingLocked() >= count; })) {
    lock.unlock();
    if (met()) return true;
    if (std::chrono::steady_clock::now() > limit) return false;
    lock.lock();
  }
  return true;
}

std::size_t SimulatedClock::Sleeps() const {
  const std::lock_guard lock(mutex_);
  std::size_t all = 0;
  for (const auto& [duration, count] : sleeps_) all += count;
  return all;
}

std::size_t SimulatedClock::Sleeps(Duration duration) const {
  const std::lock_guard lock(mutex_);
  const auto found = sleeps_.find(duration);
  return found == sleeps_.end() ? 0 : found->second;
}

}  // namespace stream
