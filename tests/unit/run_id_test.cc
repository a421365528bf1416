#include "common/run_id.h"

#include <gtest/gtest.h>

namespace stream {
namespace {

TEST(RunCounterTest, NextBeginsARunWithAnIdOfItsOwn) {
  RunCounter runs;
  const RunId before = runs.Current();
  const RunId first = runs.Next();
  const RunId second = runs.Next();
  EXPECT_NE(first, before);
  EXPECT_NE(second, first);
  EXPECT_NE(second, before);
}

TEST(RunCounterTest, OnlyTheLastRunIsCurrent) {
  RunCounter runs;
  const RunId first = runs.Next();
  EXPECT_TRUE(runs.IsCurrent(first));
  const RunId second = runs.Next();
  EXPECT_FALSE(runs.IsCurrent(first));
  EXPECT_TRUE(runs.IsCurrent(second));
  EXPECT_EQ(runs.Current(), second);
}

}  // namespace
}  // namespace stream
