// SilenceWatch: whether a transfer has received nothing for longer than it may. It looks at no
// clock: the caller passes the time. Used by one thread.
#ifndef COMMON_SILENCE_WATCH_H_
#define COMMON_SILENCE_WATCH_H_

#include <cstdint>

#include "common/clock.h"

class SilenceWatch {
 public:
  // A limit of zero is none. The silence begins at `now`.
  SilenceWatch(Clock::Duration limit, Clock::TimePoint now) : limit_(limit), since_(now) {}

  // `received` is the transfer's count of bytes; it may start again, as it does after a redirect,
  // and a changed count is what ends a silence.
  bool IsTooLong(std::uint64_t received, Clock::TimePoint now);

 private:
  const Clock::Duration limit_;
  Clock::TimePoint since_;
  std::uint64_t received_ = 0;
};

#endif  // COMMON_SILENCE_WATCH_H_
