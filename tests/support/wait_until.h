// Polls for a condition that notifies nobody.
#ifndef TESTS_SUPPORT_WAIT_UNTIL_H_
#define TESTS_SUPPORT_WAIT_UNTIL_H_

#include <chrono>
#include <thread>

#include "tests/support/test_limit.h"

// False if the time limit expires before `met` is true.
template <typename Condition>
bool WaitUntil(Condition met) {
  const auto limit = std::chrono::steady_clock::now() + kTestLimit;
  while (!met()) {
    if (std::chrono::steady_clock::now() > limit) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

#endif  // TESTS_SUPPORT_WAIT_UNTIL_H_
