#include "number_watch.h"

#include <cmath>

namespace report {

void NumberWatch::Add(double ms, double value) {
  ++count;
  if (!std::isfinite(value)) {
    ++not_finite;
    return;
  }
  if (newest && value < *newest - tolerance_) {
    if (went_back == 0) went_back_at_ms = ms;
    ++went_back;
  }
  if (!first) first = value;
  newest = value;
  newest_ms = ms;
  const Range alone{value, value};
  if (range) {
    range->Join(alone);
  } else {
    range = alone;
  }
  points.Add(NumberPoint(ms, value));
}

}  // namespace report
