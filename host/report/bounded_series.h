// Points in the order in which they came, of which there are never more than a few thousand: when
// they become too many, neighbours are joined two by two, and from then on twice as many go into
// one.
//
// `Point` joins a later neighbour with Join(const Point&), which must lose no extreme and no sum.
#ifndef HOST_REPORT_BOUNDED_SERIES_H_
#define HOST_REPORT_BOUNDED_SERIES_H_

#include <cstddef>
#include <vector>

namespace report {

inline constexpr std::size_t kMostPoints = 4096;  // even

template <typename Point>
class BoundedSeries {
 public:
  void Add(const Point& point) {
    if (in_last_ == 0) {
      if (points_.size() == kMostPoints) Halve();
      points_.push_back(point);
    } else {
      points_.back().Join(point);
    }
    in_last_ = (in_last_ + 1) % per_point_;
  }

  const std::vector<Point>& Points() const { return points_; }
  // How many of those that were added one point stands for; the last may stand for fewer.
  std::size_t PerPoint() const { return per_point_; }

 private:
  void Halve() {
    for (std::size_t i = 0; i < kMostPoints / 2; ++i) {
      points_[i] = points_[2 * i];
      points_[i].Join(points_[2 * i + 1]);
    }
    points_.erase(points_.begin() + kMostPoints / 2, points_.end());
    per_point_ *= 2;
  }

  std::vector<Point> points_;
  std::size_t per_point_ = 1;
  std::size_t in_last_ = 0;  // how many the last point stands for; 0 when it is full
};

}  // namespace report

#endif  // HOST_REPORT_BOUNDED_SERIES_H_
