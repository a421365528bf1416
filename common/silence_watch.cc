#include "common/silence_watch.h"

namespace stream {

bool SilenceWatch::IsTooLong(std::uint64_t received, Clock::TimePoint now) {
  if (received != received_) {
    received_ = received;
    since_ = now;
  }
  return limit_ > Clock::Duration::zero() && now - since_ >= limit_;
}

}  // namespace stream
