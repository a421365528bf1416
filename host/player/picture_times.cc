#include "picture_times.h"

#include <algorithm>
#include <vector>

namespace player {
namespace {

// A larger step back restarts the times. A smaller one is reordering: a decoder holds back at most
// sixteen pictures, which usually last less than this.
constexpr std::uint64_t kJump = 90'000;

}  // namespace

void PictureTimes::Sent(std::uint64_t pts, std::uint64_t dts) {
  // Decoders hold back far fewer. The rest are times of pictures that were never output.
  constexpr std::size_t kMaxWaiting = 64;
  // Without reordering, pts and dts are equal, and the distinction does not matter.
  if (pts != dts) has_presentation_times_ = true;
  RecordDistance(pts);
  Queue(pts);
  if (waiting_.size() > kMaxWaiting) waiting_.pop_front();
}

void PictureTimes::Queue(std::uint64_t pts) {
  const auto stays_before = [pts](std::uint64_t time) { return time <= pts || time - pts > kJump; };
  const auto last = std::find_if(waiting_.rbegin(), waiting_.rend(), stays_before);
  waiting_.insert(last.base(), pts);
}

void PictureTimes::RecordDistance(std::uint64_t pts) {
  constexpr std::size_t kMaxDistances = 8;
  if (last_sent_ && pts > *last_sent_) distances_.push_back(pts - *last_sent_);
  if (distances_.size() > kMaxDistances) distances_.pop_front();
  last_sent_ = pts;
}

std::uint64_t PictureTimes::TimeOf(std::uint64_t pts, bool is_key, int depth) {
  const auto own = std::find(waiting_.begin(), waiting_.end(), pts);
  if (has_presentation_times_ || depth == 0 || waiting_.empty()) {
    if (own != waiting_.end()) waiting_.erase(own);
    return pts;
  }
  // Pictures sent before a key picture have been output before it, or never will be.
  if (is_key && own != waiting_.end()) waiting_.erase(waiting_.begin(), own);
  const std::uint64_t time = waiting_.front();
  waiting_.pop_front();
  return shown_later_ ? time + static_cast<std::uint64_t>(depth) * MedianDistance() : time;
}

// The median, which a jump does not affect. For an even count the lower middle value, since a jump
// is large.
std::uint64_t PictureTimes::MedianDistance() const {
  if (distances_.empty()) return 0;
  // A single distance may be a jump.
  if (distances_.size() == 1 && distances_.front() > kJump) return 0;
  std::vector<std::uint64_t> sorted(distances_.begin(), distances_.end());
  const auto middle = sorted.begin() + (static_cast<std::ptrdiff_t>(sorted.size()) - 1) / 2;
  std::nth_element(sorted.begin(), middle, sorted.end());
  return *middle;
}

}  // namespace player
