#include "seek_target.h"

#include <algorithm>

namespace player {

double SeekTarget(double position, double step, std::optional<double> duration) {
  constexpr double kLeftToPlay = 2;
  double target = std::max(position + step, 0.0);
  if (duration && *duration > position) {
    // A step forward never goes back.
    const double last = std::max(*duration - kLeftToPlay, step > 0 ? position : 0.0);
    target = std::min(target, last);
  }
  return target;
}

}  // namespace player
