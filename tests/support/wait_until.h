// Waiting for something that tells nobody when it happens.
#ifndef TESTS_SUPPORT_WAIT_UNTIL_H_
#define TESTS_SUPPORT_WAIT_UNTIL_H_

#include <chrono>
#include <future>
#include <thread>

// False when `met` did not hold within the time limit.
template <typename Condition>
bool WaitUntil(Condition met) {
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (!met()) {
    if (std::chrono::steady_clock::now() > limit) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

// Whether it has not come to its end, given some time to do so.
template <typename Result>
bool StillWaits(const std::future<Result>& waiting) {
  return waiting.wait_for(std::chrono::milliseconds(100)) == std::future_status::timeout;
}

#endif  // TESTS_SUPPORT_WAIT_UNTIL_H_
