#include "common/once_per_start.h"

#include <gtest/gtest.h>

namespace stream {
namespace {

constexpr auto kLine = OncePerStart::kPlayerThrew;

TEST(OnceAStartTest, OnlyTheFirstCallAfterAStartReturnsTrue) {
  EXPECT_TRUE(IsFirstSinceStart(kLine)) << "no start was counted yet";
  EXPECT_FALSE(IsFirstSinceStart(kLine));
  CountStart();
  EXPECT_TRUE(IsFirstSinceStart(kLine));
  EXPECT_FALSE(IsFirstSinceStart(kLine));
}

TEST(OnceAStartTest, EachLineCountsItsOwnCalls) {
  constexpr auto kOther = OncePerStart::kFileRefused;
  CountStart();
  EXPECT_TRUE(IsFirstSinceStart(kLine));
  EXPECT_TRUE(IsFirstSinceStart(kOther));
}

}  // namespace
}  // namespace stream
