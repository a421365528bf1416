#include "common/once_a_start.h"

#include <gtest/gtest.h>

namespace {

TEST(OnceAStartTest, OnlyTheFirstCallAfterAStartReturnsTrue) {
  OnceAStart line;
  EXPECT_TRUE(line.IsFirst()) << "no start was counted yet";
  EXPECT_FALSE(line.IsFirst());
  CountStart();
  EXPECT_TRUE(line.IsFirst());
  EXPECT_FALSE(line.IsFirst());
}

TEST(OnceAStartTest, EachLineCountsItsOwnCalls) {
  OnceAStart line;
  OnceAStart other;
  CountStart();
  EXPECT_TRUE(line.IsFirst());
  EXPECT_TRUE(other.IsFirst());
}

}  // namespace
