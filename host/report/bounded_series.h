// Points in order of arrival, at most kMaxPoints of them. When the series is full, each pair of
// neighbours is joined into one point, and from then on each new point holds twice as many values.
//
// `Point` needs Join(const Point&), which adds a later neighbour and must preserve extremes and
// sums.
#ifndef HOST_REPORT_BOUNDED_SERIES_H_
#define HOST_REPORT_BOUNDED_SERIES_H_

#include <cstddef>
#include <vector>

namespace report {

inline constexpr std::size_t kMaxPoints = 4096;  // even

template <typename Point>
class BoundedSeries {
 public:
  void Add(const Point& point) {
    if (in_last_ == 0) {
      if (points_.size() == kMaxPoints) Halve();
      points_.push_back(point);
    } else {
      points_.back().Join(point);
    }
    in_last_ = (in_last_ + 1) % per_point_;
  }

  const std::vector<Point>& Points() const { return points_; }
  // How many added values one point represents; the last point may represent fewer.
  std::size_t PerPoint() const { return per_point_; }

 private:
  void Halve() {
    for (std::size_t i = 0; i < kMaxPoints / 2; ++i) {
      points_[i] = points_[2 * i];
      points_[i].Join(points_[2 * i + 1]);
    }
    points_.erase(points_.begin() + kMaxPoints / 2, points_.end());
    per_point_ *= 2;
  }

  std::vector<Point> points_;
  std::size_t per_point_ = 1;
  std::size_t in_last_ = 0;  // how many values the last point represents; 0 when it is full
};

}  // namespace report

#endif  // HOST_REPORT_BOUNDED_SERIES_H_
