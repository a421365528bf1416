#include "common/once_per_start.h"

#include <gtest/gtest.h>

namespace stream {
namespace {

constexpr auto kLine = OncePerStart::kPlayerThrew;

// Called before main, since a start is counted before each test.
const bool g_veryFirstCall = IsFirstSinceStart(kLine);

TEST(OncePerStartTest, VeryFirstCallReturnsTrueAlthoughNoStartWasCounted) {
  EXPECT_TRUE(g_veryFirstCall);
}

TEST(OncePerStartTest, OnlyTheFirstCallAfterAStartReturnsTrue) {
  for (int start = 0; start < 2; ++start) {
    CountStart();
    EXPECT_TRUE(IsFirstSinceStart(kLine));
    EXPECT_FALSE(IsFirstSinceStart(kLine));
  }
}

TEST(OncePerStartTest, EachLineCountsItsOwnCalls) {
  constexpr auto kOther = OncePerStart::kFileRefused;
  CountStart();
  EXPECT_TRUE(IsFirstSinceStart(kLine));
  EXPECT_TRUE(IsFirstSinceStart(kOther));
}

}  // namespace
}  // namespace stream
