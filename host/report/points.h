// The data of the charts: single values, or several neighbours joined, with their extremes.
//
// Arrival times are milliseconds since the recording began; stream times are 90 kHz ticks.
#ifndef HOST_REPORT_POINTS_H_
#define HOST_REPORT_POINTS_H_

#include <algorithm>
#include <cstdint>
#include <optional>

namespace report {

inline constexpr double kTicksPerSecond = 90'000;
inline constexpr double kMsPerSecond = 1000;
// The largest difference in stream time by which neighbouring frames may be out of display order.
inline constexpr double kReorderSeconds = 1;

// From one timestamp to another, in seconds; negative when it goes back.
inline double SecondsBetween(std::uint64_t from, std::uint64_t to) {
  return (static_cast<double>(to) - static_cast<double>(from)) / kTicksPerSecond;
}

// The smallest and the largest of several values.
struct Range {
  double low;
  double high;

  void Join(const Range& later) {
    low = std::min(low, later.low);
    high = std::max(high, later.high);
  }
};

struct NumberPoint {
  double ms;  // arrival of the latest value
  double newest;
  Range range;

  NumberPoint(double arrival_ms, double value)
      : ms(arrival_ms), newest(value), range{value, value} {}

  void Join(const NumberPoint& later) {
    ms = later.ms;
    newest = later.newest;
    range.Join(later.range);
  }
};

struct FramePoint {
  double ms;          // arrival of the first frame
  std::uint64_t pts;  // of the first frame
  std::uint64_t frames = 1;
  std::uint64_t bytes;
  std::uint64_t largest;  // bytes of the largest frame
  // Seconds since the previous frame, with `dts` and without it; nullopt for the first frame.
  std::optional<Range> dts_steps;
  std::optional<Range> pts_steps;

  void Join(const FramePoint& later) {
    frames += later.frames;
    bytes += later.bytes;
    largest = std::max(largest, later.largest);
    JoinSteps(dts_steps, later.dts_steps);
    JoinSteps(pts_steps, later.pts_steps);
  }

 private:
  static void JoinSteps(std::optional<Range>& steps, const std::optional<Range>& later) {
    if (steps && later) {
      steps->Join(*later);
    } else if (later) {
      steps = later;
    }
  }
};

}  // namespace report

#endif  // HOST_REPORT_POINTS_H_
