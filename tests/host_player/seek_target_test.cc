#include "host/player/seek_target.h"

#include <gtest/gtest.h>

namespace player {
namespace {

TEST(SeekTargetTest, StepMovesForwardAndBack) {
  EXPECT_DOUBLE_EQ(SeekTarget(20, 10, 60), 30);
  EXPECT_DOUBLE_EQ(SeekTarget(20, -10, 60), 10);
  EXPECT_DOUBLE_EQ(SeekTarget(20, 10, std::nullopt), 30);
}

TEST(SeekTargetTest, TargetIsNotBeforeTheBeginning) { EXPECT_DOUBLE_EQ(SeekTarget(4, -10, 60), 0); }

TEST(SeekTargetTest, TargetLeavesSomethingToPlay) { EXPECT_DOUBLE_EQ(SeekTarget(55, 10, 60), 58); }

TEST(SeekTargetTest, StepForwardNearTheEndDoesNotMove) {
  EXPECT_DOUBLE_EQ(SeekTarget(59, 10, 60), 59);
  EXPECT_DOUBLE_EQ(SeekTarget(59, -10, 60), 49);
}

TEST(SeekTargetTest, DurationBeforeThePositionIsIgnored) {
  EXPECT_DOUBLE_EQ(SeekTarget(20, 10, 7), 30);
}

}  // namespace
}  // namespace player
