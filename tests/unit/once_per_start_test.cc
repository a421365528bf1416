#include "common/once_per_start.h"

#include <gtest/gtest.h>

namespace {

TEST(OnceAStartTest, OnlyTheFirstCallAfterAStartReturnsTrue) {
  OncePerStart line;
  EXPECT_TRUE(line.IsFirst()) << "no start was counted yet";
  EXPECT_FALSE(line.IsFirst());
  CountStart();
  EXPECT_TRUE(line.IsFirst());
  EXPECT_FALSE(line.IsFirst());
}

TEST(OnceAStartTest, EachLineCountsItsOwnCalls) {
  OncePerStart line;
  OncePerStart other;
  CountStart();
  EXPECT_TRUE(line.IsFirst());
  EXPECT_TRUE(other.IsFirst());
}

}  // namespace
