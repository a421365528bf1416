#include "host/report/bounded_series.h"

#include <gtest/gtest.h>

#include "host/report/points.h"

namespace report {
namespace {

struct Sum {
  long values = 1;
  long total;

  void Join(const Sum& later) {
    values += later.values;
    total += later.total;
  }
};

BoundedSeries<Sum> SeriesOf(long count) {
  BoundedSeries<Sum> series;
  for (long n = 0; n < count; ++n) series.Add({1, n});
  return series;
}

TEST(BoundedSeriesTest, FewPointsStayAsTheyAre) {
  const auto series = SeriesOf(static_cast<long>(kMostPoints));
  EXPECT_EQ(series.Points().size(), kMostPoints);
  EXPECT_EQ(series.PerPoint(), 1U);
  EXPECT_EQ(series.Points().back().total, static_cast<long>(kMostPoints) - 1);
}

TEST(BoundedSeriesTest, ManyPointsAreJoinedAndNoneIsLostOrDoubled) {
  for (const long count : {4097L, 8192L, 8193L, 300'001L, 1'000'000L}) {
    const auto series = SeriesOf(count);
    EXPECT_LE(series.Points().size(), kMostPoints);
    EXPECT_GT(series.Points().size(), kMostPoints / 2 - 1);
    Sum sum{0, 0};
    for (const Sum& point : series.Points()) {
      EXPECT_LE(point.values, static_cast<long>(series.PerPoint()));
      sum.Join(point);
    }
    EXPECT_EQ(sum.values, count);
    EXPECT_EQ(sum.total, count * (count - 1) / 2);
  }
}

TEST(BoundedSeriesTest, JoinedNumbersKeepTheirExtremesAndTheNewest) {
  BoundedSeries<NumberPoint> series;
  const auto count = static_cast<int>(kMostPoints) + 2;
  for (int n = 0; n < count; ++n) series.Add(NumberPoint(n, n == 100 ? -7 : n));
  EXPECT_EQ(series.PerPoint(), 2U);
  EXPECT_EQ(series.Points()[50].range.low, -7);
  EXPECT_EQ(series.Points()[50].range.high, 101);
  EXPECT_EQ(series.Points().back().newest, count - 1);
}

}  // namespace
}  // namespace report
