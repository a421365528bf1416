// How long a test waits before it fails. The limit is so long that only a hang exceeds it, also
// under wine on a busy machine. No assertion depends on it.
#ifndef TESTS_SUPPORT_TEST_LIMIT_H_
#define TESTS_SUPPORT_TEST_LIMIT_H_

#include <chrono>

inline constexpr std::chrono::seconds kTestLimit{90};

#endif  // TESTS_SUPPORT_TEST_LIMIT_H_
