#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "ts/ts_parse.h"

namespace stream {
namespace {

class TsDurationReportTest : public testing::Test {
 protected:
  TsDurationReportTest() {
    queue_.head = &oldest_;
    queue_.tail = &newest_;
    queue_.count = 2;
  }
  float Update(std::uint64_t oldest_pts, std::uint64_t newest_pts) {
    oldest_.pts = oldest_pts;
    newest_.pts = newest_pts;
    return report_.Update(&queue_);
  }

  FrameNode oldest_;
  FrameNode newest_;
  FrameQueue queue_;
  TsDurationReport report_;
};

TEST_F(TsDurationReportTest, FirstUpdateRecordsTheFirstFrameAndReportsNothing) {
  EXPECT_LT(Update(90'000, 270'000), 0);
}

TEST_F(TsDurationReportTest, SpanFromTheFirstFrameIsReportedWheneverItGrows) {
  Update(90'000, 270'000);
  EXPECT_EQ(Update(90'000, 270'000), 2.0F);
  EXPECT_LT(Update(180'000, 270'000), 0);  // nothing newer
  EXPECT_LT(Update(180'000, 260'000), 0);  // out of order
  EXPECT_EQ(Update(180'000, 315'000), 2.5F);
}

TEST_F(TsDurationReportTest, EmptyOrMissingQueueReportsNothing) {
  Update(90'000, 270'000);
  const FrameQueue empty;
  EXPECT_LT(report_.Update(&empty), 0);
  EXPECT_LT(report_.Update(nullptr), 0);
}

TEST_F(TsDurationReportTest, DurationDoesNotWrapIfTheNewestFrameIsBeforeTheFirst) {
  Update(90'000, 90'000);
  EXPECT_LT(Update(90'000, 80'000), 0);
  EXPECT_EQ(Update(90'000, 180'000), 1.0F);
}

TEST_F(TsDurationReportTest, LargestTimestampYieldsAFiniteDuration) {
  constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
  Update(1, 1);
  EXPECT_FLOAT_EQ(Update(1, kMost), 18446744073709551615.0F / 90'000);
  EXPECT_LT(Update(1, 0), 0);
}

}  // namespace
}  // namespace stream
