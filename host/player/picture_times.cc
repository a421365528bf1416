#include "picture_times.h"

#include <algorithm>

namespace player {

void PictureTimes::Sent(std::uint64_t pts, std::uint64_t dts) {
  // A decoder holds back far fewer; more are left of pictures that never came.
  constexpr std::size_t kMostWaiting = 64;
  // Where nothing is put in order the two are the same, and it does not matter which is which.
  if (pts != dts) has_presentation_times_ = true;
  if (sent_++ == 0) first_ = pts;
  newest_ = std::max(newest_, pts);
  waiting_.insert(pts);
  if (waiting_.size() > kMostWaiting) waiting_.erase(waiting_.begin());
}

std::uint64_t PictureTimes::TimeOf(std::uint64_t pts, bool is_key, int depth) {
  const auto own = waiting_.find(pts);
  if (has_presentation_times_ || depth == 0 || waiting_.empty()) {
    if (own != waiting_.end()) waiting_.erase(own);
    return pts;
  }
  // What was sent before a key picture has come out before it, or never will.
  if (is_key && own != waiting_.end()) waiting_.erase(waiting_.begin(), own);
  const std::uint64_t time = *waiting_.begin();
  waiting_.erase(waiting_.begin());
  return shown_later_ ? time + static_cast<std::uint64_t>(depth) * Step() : time;
}

std::uint64_t PictureTimes::Step() const {
  return sent_ > 1 && newest_ > first_ ? (newest_ - first_) / (sent_ - 1) : 0;
}

}  // namespace player
