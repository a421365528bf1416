// Console lines that are logged once a start, however often what they report happens.
#ifndef COMMON_ONCE_A_START_H_
#define COMMON_ONCE_A_START_H_

#include <atomic>
#include <cstdint>

// The facade calls it at the beginning of each start.
void CountStart();

// One for each kind of line. Safe from any thread.
class OnceAStart {
 public:
  // True for the first call after each CountStart, and for the first call of all.
  bool IsFirst();

 private:
  std::atomic<std::uint64_t> seen_{UINT64_MAX};  // count of starts at the last call
};

#endif  // COMMON_ONCE_A_START_H_
