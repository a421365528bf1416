// StopSleepRecorder: forwards to the system's clock and records the sleeps that begin after the run
// flag has been cleared, because a stop has to wait for them. A stop is prompt if no thread begins
// more than the one sleep it had already decided on. That is checked without measuring time.
#ifndef TESTS_SUPPORT_STOP_SLEEP_RECORDER_H_
#define TESTS_SUPPORT_STOP_SLEEP_RECORDER_H_

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <ctime>
#include <functional>
#include <map>
#include <mutex>
#include <thread>
#include <utility>

#include "common/clock.h"

namespace stream {

// It is the component's clock from its construction to its destruction; stop every pipeline before
// it is destroyed. Safe from any thread.
class StopSleepRecorder final : public Clock {
 public:
  // `runs` returns the run flag. It is called from any thread, also while locks of the component
  // are held.
  explicit StopSleepRecorder(std::function<bool()> runs);
  ~StopSleepRecorder();
  StopSleepRecorder(const StopSleepRecorder&) = delete;
  StopSleepRecorder& operator=(const StopSleepRecorder&) = delete;

  TimePoint Now() override { return system_.Now(); }
  std::time_t WallTime() override { return system_.WallTime(); }
  void Sleep(Duration duration) override;

  // A wait ends when its condition is true, never because its limit expires. So a stop that fails
  // to notify a waiting thread hangs, which is recorded after the time limit of a test. While
  // EndWaitsImmediately(true) is in effect, a wait with a limit ends at once, or when it is next
  // notified.
  bool WaitFor(std::condition_variable& condition, Mutex& mutex, Duration limit,
               const std::function<bool()>& met) REQUIRES(mutex) override;
  void Wait(std::condition_variable& condition, Mutex& mutex, const std::function<bool()>& met)
      REQUIRES(mutex) override;
  void EndWaitsImmediately(bool pass) { waits_pass_ = pass; }

  // Whether the stop was prompt: on each thread at most one sleep of each length began after the
  // flag had been cleared, and none is longer than `pace`. A polling loop may begin one, since the
  // flag may be cleared between its check and its sleep; it may begin two of different lengths if
  // what the thread waits for becomes available at that moment.
  testing::AssertionResult WasPrompt(Duration pace) const;

  // Clears the record before the next start.
  void Forget();

  // The number of sleeps that have begun since the construction.
  std::size_t Sleeps() const;

  // Waits until `count` sleeps have begun since the construction. False if the time limit of a test
  // expires first.
  bool WaitForSleeps(std::size_t count);

 private:
  using ThreadAndLength = std::pair<std::thread::id, Duration>;

  // Waits until `met` is true and returns its value. Records a hang.
  bool WaitUntilMet(std::condition_variable& condition, Mutex& mutex,
                    const std::function<bool()>& met) REQUIRES(mutex);

  Clock& system_;
  const std::function<bool()> runs_;
  std::atomic<bool> waits_pass_{false};

  mutable std::mutex mutex_;
  std::condition_variable slept_;
  // All guarded by mutex_.
  std::size_t sleeps_ = 0;
  std::map<ThreadAndLength, int> after_the_stop_;  // the number of sleeps of each kind
  bool wait_hung_ = false;
};

// A base class of fixtures. List it before the base with the facade, so that the recorder is in use
// until the facade has stopped.
class RecordedStops {
 protected:
  explicit RecordedStops(std::function<bool()> runs) : sleep_recorder_(std::move(runs)) {}
  ~RecordedStops() = default;

  StopSleepRecorder sleep_recorder_;
};

}  // namespace stream

#endif  // TESTS_SUPPORT_STOP_SLEEP_RECORDER_H_
