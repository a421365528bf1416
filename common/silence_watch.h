// SilenceWatch: whether a transfer has received nothing for longer than it may. Knows no clock: the
// caller passes the time. Used by one thread.
#ifndef COMMON_SILENCE_WATCH_H_
#define COMMON_SILENCE_WATCH_H_

#include <chrono>
#include <cstdint>

class SilenceWatch {
 public:
  using Clock = std::chrono::steady_clock;

  // A limit of zero is none. The silence begins at `now`.
  SilenceWatch(Clock::duration limit, Clock::time_point now) : limit_(limit), since_(now) {}

  // `received` is the transfer's count of bytes; it may start again, as it does after a redirect,
  // and a changed count is what ends a silence.
  bool IsTooLong(std::uint64_t received, Clock::time_point now);

 private:
  const Clock::duration limit_;
  Clock::time_point since_;
  std::uint64_t received_ = 0;
};

#endif  // COMMON_SILENCE_WATCH_H_
