// Records a number that the player receives repeatedly: a duration, a buffered time or a clock, in
// seconds. Values that are not finite are only counted. A plain value without a lock.
#ifndef HOST_REPORT_NUMBER_WATCH_H_
#define HOST_REPORT_NUMBER_WATCH_H_

#include <cstdint>
#include <optional>

#include "bounded_series.h"
#include "points.h"

namespace report {

class NumberWatch {
 public:
  NumberWatch() = default;
  // Does not count a step back of at most `tolerance`.
  explicit NumberWatch(double tolerance) : tolerance_(tolerance) {}

  void Add(double ms, double value);

  std::uint64_t count = 0;
  std::uint64_t not_finite = 0;
  std::uint64_t went_back = 0;  // smaller than the previous value
  double went_back_at_ms = 0;   // of the first step back
  std::optional<double> first;
  std::optional<double> newest;
  std::optional<Range> range;
  double newest_ms = 0;
  BoundedSeries<NumberPoint> points;

 private:
  double tolerance_ = 0;
};

}  // namespace report

#endif  // HOST_REPORT_NUMBER_WATCH_H_
