// Threads that wait by looking again and again, asleep in between: whether one of them still waits,
// shown by what it does and not by how long nothing has happened.
#ifndef TESTS_SUPPORT_POLLING_H_
#define TESTS_SUPPORT_POLLING_H_

#include <cstddef>

#include "tests/support/simulated_clock.h"
#include "tests/support/wait_until.h"

// Lets the only thread that sleeps in `clock` look again a few times, each time after exactly
// `pace`. False if it has not gone back to sleep for that long each time.
inline bool StillPolls(SimulatedClock& clock, Clock::Duration pace) {
  constexpr int kTimes = 3;
  for (int i = 0; i < kTimes; ++i) {
    if (!clock.AwaitWaiting(1)) return false;
    const std::size_t sleeps = clock.Sleeps(pace);
    clock.Advance(pace);
    if (!WaitUntil([&] { return clock.Sleeps(pace) == sleeps + 1; })) return false;
  }
  return clock.AwaitWaiting(1);
}

#endif  // TESTS_SUPPORT_POLLING_H_
