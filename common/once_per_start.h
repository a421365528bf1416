// Limits a console line to once a start, however often its cause occurs.
#ifndef COMMON_ONCE_PER_START_H_
#define COMMON_ONCE_PER_START_H_

#include <atomic>
#include <cstdint>

// Called by the facade at the beginning of each start.
void CountStart();

// One object for each kind of line. Safe from any thread.
class OncePerStart {
 public:
  // Returns true for the first call after each CountStart, and for the very first call.
  bool IsFirst();

 private:
  std::atomic<std::uint64_t> seen_{UINT64_MAX};  // count of starts at the last call
};

#endif  // COMMON_ONCE_PER_START_H_
