// What the charts are drawn from: single values, or several neighbours joined with their extremes.
//
// Times of arrival are milliseconds since the recording began; stream time is in 90 kHz ticks.
#ifndef HOST_REPORT_POINTS_H_
#define HOST_REPORT_POINTS_H_

#include <algorithm>
#include <cstdint>
#include <optional>

namespace report {

inline constexpr double kTicksPerSecond = 90'000;
inline constexpr double kMsPerSecond = 1000;
// So far apart may neighbours be that are decoded in another order than they are shown.
inline constexpr double kReorderSeconds = 1;

// From one time stamp to another, in seconds; negative when that goes back.
inline double SecondsBetween(std::uint64_t from, std::uint64_t to) {
  return (static_cast<double>(to) - static_cast<double>(from)) / kTicksPerSecond;
}

// The least and the largest of some values.
struct Range {
  double low;
  double high;

  void Join(const Range& later) {
    low = std::min(low, later.low);
    high = std::max(high, later.high);
  }
};

struct NumberPoint {
  double ms;  // when the newest came
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
  double ms;          // when the first came
  std::uint64_t pts;  // of the first
  std::uint64_t frames = 1;
  std::uint64_t bytes;
  std::uint64_t largest;  // bytes of the largest frame
  // Seconds from the frame before, where dts counts and where it does not; nothing for the very
  // first.
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
