#include "host/player/start_gate.h"

#include <gtest/gtest.h>

namespace player {
namespace {

TEST(StartGateTest, BothKindsStartWithTheEarlier) {
  EXPECT_DOUBLE_EQ(*StartTime({1.48, 1.45, 0, false}), 1.45);
  EXPECT_DOUBLE_EQ(*StartTime({1.40, 1.45, 0, false}), 1.40);
}

TEST(StartGateTest, OneKindWaitsForTheOtherForALimitedTime) {
  EXPECT_FALSE(StartTime({{}, 1.45, 0.5, false}).has_value());
  EXPECT_DOUBLE_EQ(*StartTime({{}, 1.45, 1, false}), 1.45);
  EXPECT_FALSE(StartTime({1.48, {}, 0.5, false}).has_value());
  EXPECT_DOUBLE_EQ(*StartTime({1.48, {}, 1, false}), 1.48);
}

TEST(StartGateTest, OneKindDoesNotWaitIfNothingElseCanArrive) {
  EXPECT_DOUBLE_EQ(*StartTime({1.48, {}, 0, true}), 1.48);
}

TEST(StartGateTest, UnrelatedTimesStartWithTheAudio) {
  EXPECT_DOUBLE_EQ(*StartTime({0, 50, 0, false}), 50);
}

}  // namespace
}  // namespace player
