#include "hls/live_window.h"

LiveWindow g_liveWindow;

bool LiveWindow::BeginsAnew(std::int64_t first, std::size_t count) {
  if (first == kNoSequence || count == 0) return false;
  // Whether first + count <= first_, without an overflow.
  const bool before =
      first_ != kNoSequence && first < first_ &&
      count <= static_cast<std::uint64_t>(first_) - static_cast<std::uint64_t>(first);
  first_ = first;
  return before;
}
