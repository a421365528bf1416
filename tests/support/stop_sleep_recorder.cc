#include "tests/support/stop_sleep_recorder.h"

#include <utility>

#include "tests/support/test_limit.h"

namespace stream {

StopSleepRecorder::StopSleepRecorder(std::function<bool()> runs)
    : system_(CurrentClock()), runs_(std::move(runs)) {
  UseClock(this);
}

StopSleepRecorder::~StopSleepRecorder() { UseClock(nullptr); }

void StopSleepRecorder::Sleep(Duration duration) {
  const bool is_after_the_stop = !runs_();
  {
    const std::lock_guard lock(mutex_);
    ++sleeps_;
    if (is_after_the_stop) ++after_the_stop_[{std::this_thread::get_id(), duration}];
  }
  slept_.notify_all();
  system_.Sleep(duration);
}

bool StopSleepRecorder::WaitFor(std::condition_variable& condition, Mutex& mutex,
                                Duration /*limit*/, const std::function<bool()>& met) {
  WaitUntilMet(condition, mutex, [&] { return waits_pass_.load() || met(); });
  return met();
}

void StopSleepRecorder::Wait(std::condition_variable& condition, Mutex& mutex,
                             const std::function<bool()>& met) {
  while (!WaitUntilMet(condition, mutex, met)) {
  }
}

bool StopSleepRecorder::WaitUntilMet(std::condition_variable& condition, Mutex& mutex,
                                     const std::function<bool()>& met) {
  const auto deadline = std::chrono::steady_clock::now() + kTestLimit;
  while (!met()) {
    const auto wait = [&](std::unique_lock<std::mutex>& lock) {
      return condition.wait_until(lock, deadline);
    };
    if (mutex.WithLock(wait) == std::cv_status::no_timeout) continue;
    const std::lock_guard own(mutex_);
    wait_hung_ = wait_hung_ || !runs_();  // the stop should have notified this thread
    return met();
  }
  return true;
}

testing::AssertionResult StopSleepRecorder::WasPrompt(Duration pace) const {
  const std::lock_guard lock(mutex_);
  if (wait_hung_) return testing::AssertionFailure() << "a waiting thread was not notified";
  for (const auto& [thread_and_length, count] : after_the_stop_) {
    const auto length = thread_and_length.second;
    if (count > 1 || length > pace) {
      return testing::AssertionFailure() << "after the stop a thread slept " << count
                                         << " times for " << length.count() << " ms";
    }
  }
  return testing::AssertionSuccess();
}

void StopSleepRecorder::Forget() {
  const std::lock_guard lock(mutex_);
  after_the_stop_.clear();
  wait_hung_ = false;
}

std::size_t StopSleepRecorder::Sleeps() const {
  const std::lock_guard lock(mutex_);
  return sleeps_;
}

bool StopSleepRecorder::WaitForSleeps(std::size_t count) {
  std::unique_lock lock(mutex_);
  return slept_.wait_for(lock, kTestLimit, [&] { return sleeps_ >= count; });
}

}  // namespace stream
