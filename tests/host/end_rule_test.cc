#include "host/shared/end_rule.h"

#include <gtest/gtest.h>

namespace host {
namespace {

constexpr EndRule kIdleOnly{3000, std::nullopt};
constexpr EndRule kBoth{3000, 5000};

TEST(EndRuleTest, RunContinuesWhileCallsAreReceived) {
  EXPECT_EQ(ReasonToEnd(kIdleOnly, {100'000, 0, 97'001, false}), std::nullopt);
}

TEST(EndRuleTest, SilenceForTheIdleTimeEndsTheRun) {
  EXPECT_EQ(ReasonToEnd(kIdleOnly, {100'000, 0, 97'000, false}), EndReason::kIdle);
}

TEST(EndRuleTest, ArrivalAfterTheCheckIsNotSilence) {
  EXPECT_EQ(ReasonToEnd(kIdleOnly, {1000, 0, 1001, false}), std::nullopt);
}

TEST(EndRuleTest, StopAfterEndsTheRunWhileFramesArrive) {
  EXPECT_EQ(ReasonToEnd(kBoth, {5999, 1000, 5999, false}), std::nullopt);
  EXPECT_EQ(ReasonToEnd(kBoth, {6000, 1000, 6000, false}), EndReason::kStopAfter);
}

TEST(EndRuleTest, StopAfterZeroEndsAtOnce) {
  EXPECT_EQ(ReasonToEnd({3000, 0.0}, {10, 10, 10, false}), EndReason::kStopAfter);
}

TEST(EndRuleTest, InterruptionHasPriority) {
  EXPECT_EQ(ReasonToEnd(kBoth, {6000, 1000, 1000, true}), EndReason::kInterrupted);
  EXPECT_EQ(ReasonToEnd(kBoth, {1000, 1000, 1000, true}), EndReason::kInterrupted);
}

TEST(EndRuleTest, RunContinuesForAMomentOnceTheExpectedIsReceived) {
  EXPECT_EQ(ReasonToEnd(kIdleOnly, {10'000, 0, 10'000, false, 9801}), std::nullopt);
  EXPECT_EQ(ReasonToEnd(kIdleOnly, {10'000, 0, 10'000, false, 9800}), EndReason::kExpected);
}

TEST(EndRuleTest, RunThatLacksSomethingExpectedEndsOnlyAfterTheIdleTime) {
  EXPECT_EQ(ReasonToEnd(kIdleOnly, {10'000, 0, 7001, false, std::nullopt}), std::nullopt);
  EXPECT_EQ(ReasonToEnd(kIdleOnly, {10'000, 0, 7000, false, std::nullopt}), EndReason::kIdle);
}

TEST(EndRuleTest, InterruptionAndStopAfterHavePriorityOverTheExpected) {
  EXPECT_EQ(ReasonToEnd(kBoth, {4000, 0, 1000, true, 1000}), EndReason::kInterrupted);
  EXPECT_EQ(ReasonToEnd(kBoth, {5000, 0, 4000, false, 4000}), EndReason::kStopAfter);
}

TEST(EndRuleTest, ReasonsHaveTheNamesOfTheSummary) {
  EXPECT_STREQ(NameOf(EndReason::kExpected), "expected");
  EXPECT_STREQ(NameOf(EndReason::kIdle), "idle");
  EXPECT_STREQ(NameOf(EndReason::kStopAfter), "stop-after");
  EXPECT_STREQ(NameOf(EndReason::kInterrupted), "interrupted");
  EXPECT_STREQ(NameOf(EndReason::kRefused), "refused");
}

}  // namespace
}  // namespace host
