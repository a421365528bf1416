#include "host/report/bounded_series.h"

#include <gtest/gtest.h>

#include <cstdint>

#include "host/report/points.h"

namespace report {
namespace {

struct Sum {
  std::int64_t values = 1;
  std::int64_t total;

  void Join(const Sum& later) {
    values += later.values;
    total += later.total;
  }
};

BoundedSeries<Sum> SeriesOf(std::int64_t count) {
  BoundedSeries<Sum> series;
  for (std::int64_t n = 0; n < count; ++n) series.Add({1, n});
  return series;
}

TEST(BoundedSeriesTest, FewPointsAreNotJoined) {
  const auto series = SeriesOf(static_cast<std::int64_t>(kMaxPoints));
  EXPECT_EQ(series.Points().size(), kMaxPoints);
  EXPECT_EQ(series.PerPoint(), 1U);
  EXPECT_EQ(series.Points().back().total, static_cast<std::int64_t>(kMaxPoints) - 1);
}

TEST(BoundedSeriesTest, ManyPointsAreJoinedAndNoneIsLostOrRepeated) {
  for (const std::int64_t count : {4097, 8192, 8193, 300'001, 1'000'000}) {
    const auto series = SeriesOf(count);
    EXPECT_LE(series.Points().size(), kMaxPoints);
    EXPECT_GT(series.Points().size(), kMaxPoints / 2 - 1);
    Sum sum{0, 0};
    for (const Sum& point : series.Points()) {
      EXPECT_LE(point.values, static_cast<std::int64_t>(series.PerPoint()));
      sum.Join(point);
    }
    EXPECT_EQ(sum.values, count);
    EXPECT_EQ(sum.total, count * (count - 1) / 2);
  }
}

TEST(BoundedSeriesTest, JoinedNumbersKeepTheirExtremesAndTheNewest) {
  BoundedSeries<NumberPoint> series;
  const auto count = static_cast<int>(kMaxPoints) + 2;
  for (int n = 0; n < count; ++n) series.Add(NumberPoint(n, n == 100 ? -7 : n));
  EXPECT_EQ(series.PerPoint(), 2U);
  EXPECT_EQ(series.Points()[50].range.low, -7);
  EXPECT_EQ(series.Points()[50].range.high, 101);
  EXPECT_EQ(series.Points().back().newest, count - 1);
}

}  // namespace
}  // namespace report
