// Checks that a polling thread still waits, by counting its sleeps and not by waiting for something
// not to happen.
#ifndef TESTS_SUPPORT_POLLING_H_
#define TESTS_SUPPORT_POLLING_H_

#include <cstddef>

#include "tests/support/simulated_clock.h"
#include "tests/support/wait_until.h"

namespace stream {

// Wakes the only thread that sleeps in `clock` a few times, each time after exactly `pace`. Returns
// false unless it sleeps for `pace` again each time.
inline bool StillPolls(SimulatedClock& clock, Clock::Duration pace) {
  constexpr int kTimes = 3;
  for (int i = 0; i < kTimes; ++i) {
    if (!clock.WaitForWaiters(1)) return false;
    const std::size_t sleeps = clock.Sleeps(pace);
    clock.Advance(pace);
    if (!WaitUntil([&] { return clock.Sleeps(pace) == sleeps + 1; })) return false;
  }
  return clock.WaitForWaiters(1);
}

}  // namespace stream

#endif  // TESTS_SUPPORT_POLLING_H_
