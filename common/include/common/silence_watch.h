// SilenceWatch: detects that a transfer has received nothing for longer than a limit. It reads no
// clock: the caller passes the time. Used by one thread.
#ifndef COMMON_SILENCE_WATCH_H_
#define COMMON_SILENCE_WATCH_H_

#include <cstdint>

#include "common/clock.h"

namespace stream {

class SilenceWatch {
 public:
  // A limit of zero means no limit. The silence begins at `now`.
  SilenceWatch(Clock::Duration limit, Clock::TimePoint now) : limit_(limit), since_(now) {}

  // `received` is the number of bytes that the transfer has received. Any change of it ends a
  // silence. A redirect restarts the count.
  bool IsTooLong(std::uint64_t received, Clock::TimePoint now);

 private:
  const Clock::Duration limit_;
  Clock::TimePoint since_;
  std::uint64_t received_ = 0;
};

}  // namespace stream

#endif  // COMMON_SILENCE_WATCH_H_
