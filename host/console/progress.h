// The progress line of a run. Used by one thread.
//
// Implemented here because no available library draws a line that other output may overwrite.
#ifndef HOST_CONSOLE_PROGRESS_H_
#define HOST_CONSOLE_PROGRESS_H_

#include <cstdint>
#include <deque>
#include <string>

#include "screen.h"
#include "totals.h"

namespace host {

// "12.3 / 60.0 s  300 video  520 audio  1.25 MB  0.42 MB/s"
std::string ProgressText(const PlayTotals& totals, double bytes_per_second);

// Bytes per second over the last two seconds.
class RateMeter {
 public:
  double Update(double now_ms, std::uint64_t bytes);

 private:
  struct Sample {
    double at_ms;
    std::uint64_t bytes;
  };
  std::deque<Sample> samples_;
};

// Redraws at most four times a second and erases the line when destroyed. The screen is borrowed.
class ProgressLine {
 public:
  explicit ProgressLine(Screen& screen) : screen_(screen) {}
  ~ProgressLine() { screen_.EraseProgress(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  bool IsDue(double now_ms) const { return screen_.ShowsProgress() && now_ms >= next_ms_; }
  void Draw(double now_ms, const PlayTotals& totals);

 private:
  Screen& screen_;
  RateMeter rate_;
  double next_ms_ = 0;
};

}  // namespace host

#endif  // HOST_CONSOLE_PROGRESS_H_
