// How long a test waits for what it expects before it fails: so long that only a hang exceeds it,
// also under wine on a busy machine. Nothing that is asserted depends on it.
#ifndef TESTS_SUPPORT_TEST_LIMIT_H_
#define TESTS_SUPPORT_TEST_LIMIT_H_

#include <chrono>

inline constexpr std::chrono::seconds kTestLimit{90};

#endif  // TESTS_SUPPORT_TEST_LIMIT_H_
