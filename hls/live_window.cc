#include "hls/live_window.h"

#include <utility>

NeverDestroyed<LiveWindow> g_liveWindow;

// Whether first + count <= first_, without an overflow.
bool LiveWindow::LiesBelow(std::int64_t first, std::size_t count) const {
  return first_ != kNoSequence && first < first_ &&
         count <= static_cast<std::uint64_t>(first_) - static_cast<std::uint64_t>(first);
}

// Whether the doubtful window is another one than before, further on, or has come often enough.
bool LiveWindow::IsBelieved(std::int64_t first, std::size_t count) {
  constexpr int kOften = 3;
  const std::int64_t before = std::exchange(doubtful_first_, first);
  const std::size_t count_before = std::exchange(doubtful_count_, count);
  const bool moved_on = first > before || (first == before && count > count_before);
  return ++doubts_ >= kOften || (doubts_ > 1 && moved_on);
}

LiveWindow::Verdict LiveWindow::Follow(const std::string& source, std::int64_t first,
                                       std::size_t count) {
  if (first == kNoSequence || count == 0) return Verdict::kGoesOn;
  if (source != source_) {
    Forget();
    source_ = source;
  }
  const bool below = LiesBelow(first, count);
  if (below && !IsBelieved(first, count)) return Verdict::kDoubtful;
  first_ = first;
  doubts_ = 0;
  return below ? Verdict::kBeginsAnew : Verdict::kGoesOn;
}
