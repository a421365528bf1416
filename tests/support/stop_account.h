// StopAccount: the system's clock, which records what a stop has to wait for: the sleeps that
// begin once the run flag is clear. A stop is prompt if every thread sleeps no further than the
// sleep that it had decided on before, and that is shown without measuring a time.
#ifndef TESTS_SUPPORT_STOP_ACCOUNT_H_
#define TESTS_SUPPORT_STOP_ACCOUNT_H_

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

// In use from its construction to its destruction: every pipeline must be stopped before that.
// Safe from any thread.
class StopAccount final : public Clock {
 public:
  // `runs` returns the run flag. It is called from any thread, with locks of the component held.
  explicit StopAccount(std::function<bool()> runs);
  ~StopAccount();
  StopAccount(const StopAccount&) = delete;
  StopAccount& operator=(const StopAccount&) = delete;

  TimePoint Now() override { return system_.Now(); }
  std::time_t WallTime() override { return system_.WallTime(); }
  void Sleep(Duration duration) override;

  // A wait ends when its condition is met, and never by its limit: so a stop that does not notify
  // whoever waits hangs, which is noted here after the time limit of a test. While
  // LetWaitsPass(true) is in effect, a wait with a limit ends at once, or when it is next notified.
  bool WaitFor(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
               Duration limit, const std::function<bool()>& met) override;
  void Wait(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
            const std::function<bool()>& met) override;
  void LetWaitsPass(bool pass) { waits_pass_ = pass; }

  // Whether the stop waited for no more than it may: on each thread at most one sleep of each
  // length began after the flag had been cleared, and none is longer than `pace`. A loop that looks
  // at the flag has at most one, since the flag may be cleared between its look and its sleep; two
  // of different lengths where what a thread waited for arrives at that very moment.
  testing::AssertionResult WasPrompt(Duration pace) const;

  // Forgets what was recorded, before the next start.
  void Forget();

  // How many sleeps have begun since the construction.
  std::size_t Sleeps() const;

  // Waits until so many sleeps have begun since the construction. False if that does not happen
  // within the time limit of a test.
  bool AwaitSleeps(std::size_t count);

 private:
  using ThreadAndLength = std::pair<std::thread::id, Duration>;

  // Waits until `met`, which it returns. Notes a hang.
  bool WaitUntilMet(std::condition_variable& condition, std::unique_lock<std::mutex>& lock,
                    const std::function<bool()>& met);

  Clock& system_;
  const std::function<bool()> runs_;
  std::atomic<bool> waits_pass_{false};

  mutable std::mutex mutex_;
  std::condition_variable slept_;
  // All guarded by mutex_.
  std::size_t sleeps_ = 0;
  std::map<ThreadAndLength, int> after_the_stop_;  // how often each of them has begun
  bool wait_hung_ = false;
};

// A base of fixtures, named before the one with the facade: so the account is in use until whatever
// plays has been stopped.
class AccountedStops {
 protected:
  explicit AccountedStops(std::function<bool()> runs) : account_(std::move(runs)) {}
  ~AccountedStops() = default;

  StopAccount account_;
};

#endif  // TESTS_SUPPORT_STOP_ACCOUNT_H_
