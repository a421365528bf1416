#include "hls/live_window.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <ostream>

namespace {

using Verdict = LiveWindow::Verdict;

constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = LiveWindow::kNoSequence + 1;

class LiveWindowTest : public testing::Test {
 protected:
  Verdict Follow(std::int64_t first, std::size_t count) {
    return window_.Follow("list.m3u8", first, count);
  }

  LiveWindow window_;
};

TEST_F(LiveWindowTest, FirstWindowGoesOn) { EXPECT_EQ(Follow(100, 3), Verdict::kGoesOn); }

TEST_F(LiveWindowTest, SameAndLaterWindowsGoOn) {
  Follow(100, 3);
  EXPECT_EQ(Follow(100, 3), Verdict::kGoesOn);
  EXPECT_EQ(Follow(101, 3), Verdict::kGoesOn);
  EXPECT_EQ(Follow(5'000, 3), Verdict::kGoesOn);
}

TEST_F(LiveWindowTest, EarlierWindowThatTouchesTheOneBeforeGoesOn) {
  Follow(100, 3);
  EXPECT_EQ(Follow(98, 3), Verdict::kGoesOn) << "98, 99 and 100";
}

TEST_F(LiveWindowTest, WindowThatEndsBelowTheOneBeforeIsDoubtful) {
  Follow(100, 3);
  EXPECT_EQ(Follow(97, 3), Verdict::kDoubtful) << "97, 98 and 99";
}

TEST_F(LiveWindowTest, LateCopiesThatComeTwiceAreNotBelieved) {
  Follow(100, 3);
  EXPECT_EQ(Follow(0, 3), Verdict::kDoubtful);
  EXPECT_EQ(Follow(0, 3), Verdict::kDoubtful);
  EXPECT_EQ(Follow(101, 3), Verdict::kGoesOn);
  EXPECT_EQ(Follow(0, 3), Verdict::kDoubtful) << "what was doubted before counts no more";
  EXPECT_EQ(Follow(0, 3), Verdict::kDoubtful);
}

TEST_F(LiveWindowTest, WindowThatMovesOnIsBelieved) {
  Follow(100, 3);
  EXPECT_EQ(Follow(0, 3), Verdict::kDoubtful);
  EXPECT_EQ(Follow(1, 3), Verdict::kBeginsAnew);
  EXPECT_EQ(Follow(2, 3), Verdict::kGoesOn);
  EXPECT_EQ(Follow(0, 2), Verdict::kDoubtful) << "compared with the stream that began anew";
}

TEST_F(LiveWindowTest, WindowThatGrowsIsBelieved) {
  Follow(100, 3);
  EXPECT_EQ(Follow(0, 1), Verdict::kDoubtful);
  EXPECT_EQ(Follow(0, 2), Verdict::kBeginsAnew);
}

TEST_F(LiveWindowTest, WindowThatMovesBackOrShrinksIsNotBelievedForThat) {
  Follow(100, 3);
  EXPECT_EQ(Follow(10, 3), Verdict::kDoubtful);
  EXPECT_EQ(Follow(9, 9), Verdict::kDoubtful);
}

TEST_F(LiveWindowTest, WindowIsBelievedWhenItComesForTheThirdTime) {
  Follow(100, 3);
  EXPECT_EQ(Follow(0, 3), Verdict::kDoubtful);
  EXPECT_EQ(Follow(0, 3), Verdict::kDoubtful);
  EXPECT_EQ(Follow(0, 3), Verdict::kBeginsAnew);
  EXPECT_EQ(Follow(0, 3), Verdict::kGoesOn);
}

TEST_F(LiveWindowTest, PlaylistWithoutASequenceTellsNothingAndChangesNothing) {
  EXPECT_EQ(Follow(LiveWindow::kNoSequence, 3), Verdict::kGoesOn);
  Follow(100, 3);
  Follow(0, 3);
  EXPECT_EQ(Follow(LiveWindow::kNoSequence, 3), Verdict::kGoesOn);
  EXPECT_EQ(Follow(1, 3), Verdict::kBeginsAnew) << "still doubted, and moving on";
}

TEST_F(LiveWindowTest, PlaylistWithoutSegmentsTellsNothingAndChangesNothing) {
  Follow(100, 3);
  EXPECT_EQ(Follow(0, 0), Verdict::kGoesOn);
  EXPECT_EQ(Follow(99, 3), Verdict::kGoesOn) << "still compared with 100";
}

TEST_F(LiveWindowTest, WindowOfAnotherSourceIsNotComparedWith) {
  Follow(100, 3);
  EXPECT_EQ(window_.Follow("other.m3u8", 0, 3), Verdict::kGoesOn);
  EXPECT_EQ(Follow(50, 3), Verdict::kGoesOn) << "nor is the one before it";
}

TEST_F(LiveWindowTest, ForgottenWindowIsNotComparedWith) {
  Follow(100, 3);
  window_.Forget();
  EXPECT_EQ(Follow(0, 3), Verdict::kGoesOn);
}

TEST_F(LiveWindowTest, LargestAndSmallestNumbersDoNotOverflow) {
  Follow(kMax, 3);
  EXPECT_EQ(Follow(kMax, 3), Verdict::kGoesOn);
  EXPECT_EQ(Follow(kMax - 2, 3), Verdict::kGoesOn);
  EXPECT_EQ(Follow(kSmallest, 3), Verdict::kDoubtful);
  EXPECT_EQ(Follow(kSmallest + 1, 3), Verdict::kBeginsAnew);
  EXPECT_EQ(Follow(kMax, 3), Verdict::kGoesOn);
}

TEST_F(LiveWindowTest, LargestCountDoesNotOverflow) {
  Follow(kMax, 3);
  EXPECT_EQ(Follow(kSmallest, std::numeric_limits<std::size_t>::max()), Verdict::kGoesOn);
}

TEST_F(LiveWindowTest, CountThatJustReachesTheLargestDistance) {
  Follow(kMax, 3);
  const auto distance = static_cast<std::uint64_t>(kMax) - static_cast<std::uint64_t>(kSmallest);
  EXPECT_EQ(Follow(kSmallest, distance), Verdict::kDoubtful);
}

}  // namespace
