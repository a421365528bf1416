#include "hls/window_classifier.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <limits>
#include <ostream>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "hls/playlist/m3u8_playlist.h"

namespace stream {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using Verdict = WindowVerdict;
using Keys = std::vector<std::string>;

constexpr std::int64_t kLargest = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t kSmallest = kNoSequenceNumber + 1;

// "s<first>" and the following names.
Keys Names(int first, int count) {
  Keys keys;
  for (int i = first; i < first + count; ++i) keys.push_back("s" + std::to_string(i));
  return keys;
}

// The same, from a ring of `ring` names.
Keys RingNames(int first, int count, int ring) {
  Keys keys;
  for (int i = first; i < first + count; ++i) keys.push_back("r" + std::to_string(i % ring));
  return keys;
}

class WindowClassifierTest : public testing::Test {
 protected:
  Verdict Follow(std::int64_t first, const Keys& keys) {
    PlaylistWindow window{first, {}};
    for (std::size_t i = 0; i < keys.size(); ++i) {
      window.segments.push_back({first + static_cast<std::int64_t>(i), keys[i]});
    }
    const Verdict verdict = classifier_.Follow(window);
    RecordNew(keys, verdict);
    return verdict;
  }

  // Records which segments of a window are new, if the window is played.
  void RecordNew(const Keys& keys, Verdict verdict) {
    new_.clear();
    if (verdict == Verdict::kLateCopy) return;
    if (verdict == Verdict::kRestart) known_.clear();
    for (const std::string& key : keys) {
      if (known_.insert(classifier_.IdentityOf(key)).second) new_.push_back(key);
    }
  }

  // Follows windows with correct numbers, so that numbers are believed.
  void ProveNumbers(int first, int count) {
    for (int i = 0; i < 5; ++i) Follow(first + i, Names(first + i, count));
  }

  WindowClassifier classifier_;
  std::set<std::string> known_;
  Keys new_;  // of the last window
};

TEST_F(WindowClassifierTest, FirstWindowGoesOn) {
  EXPECT_EQ(Follow(100, Names(0, 3)), Verdict::kGoesOn);
  EXPECT_EQ(new_, Names(0, 3));
}

TEST_F(WindowClassifierTest, SameAndLaterWindowsGoOn) {
  Follow(100, Names(0, 3));
  EXPECT_EQ(Follow(100, Names(0, 3)), Verdict::kGoesOn);
  EXPECT_THAT(new_, IsEmpty());
  EXPECT_EQ(Follow(101, Names(1, 3)), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("s3"));
  EXPECT_EQ(Follow(5'000, Names(4'900, 3)), Verdict::kGoesOn);
  EXPECT_EQ(new_, Names(4'900, 3));
}

TEST_F(WindowClassifierTest, WindowWithoutSegmentsGoesOnAndChangesNothing) {
  Follow(100, Names(0, 3));
  EXPECT_EQ(Follow(0, {}), Verdict::kGoesOn);
  Follow(101, Names(1, 3));
  EXPECT_EQ(Follow(100, Names(0, 3)), Verdict::kLateCopy);
}

// --- Late copies ---

TEST_F(WindowClassifierTest, EarlierWindowThatAgreesIsALateCopy) {
  Follow(94, Names(94, 6));
  Follow(97, Names(97, 6));
  Follow(100, Names(100, 6));
  EXPECT_EQ(Follow(94, Names(94, 6)), Verdict::kLateCopy) << "all of it before the current window";
  EXPECT_EQ(Follow(97, Names(97, 6)), Verdict::kLateCopy) << "part of it before the current window";
  EXPECT_EQ(Follow(100, Names(100, 6)), Verdict::kGoesOn) << "the last accepted window";
}

TEST_F(WindowClassifierTest, OldCopyThatDoesNotAdvanceIsNeverBelieved) {
  for (int first = 0; first <= 50; ++first) Follow(first, Names(first, 3));
  for (int i = 0; i < 1'000; ++i) EXPECT_EQ(Follow(0, Names(0, 3)), Verdict::kLateCopy);
}

TEST_F(WindowClassifierTest, LaggingCacheNodeBetweenCurrentCopiesIsNeverBelieved) {
  for (int first = 0; first < 100; ++first) {
    EXPECT_EQ(Follow(first, Names(first, 4)), Verdict::kGoesOn);
    if (first < 6) continue;
    EXPECT_EQ(Follow(first - 6, Names(first - 6, 4)), Verdict::kLateCopy);
  }
}

TEST_F(WindowClassifierTest, LaggingCacheNodeAlonePlaysNothingAgainAndCatchesUp) {
  for (int first = 0; first <= 20; ++first) Follow(first, Names(first, 4));
  for (int first = 9; first < 20; ++first) {
    EXPECT_EQ(Follow(first, Names(first, 4)), Verdict::kLateCopy);
  }
  EXPECT_EQ(Follow(20, Names(20, 4)), Verdict::kGoesOn);
  EXPECT_EQ(Follow(21, Names(21, 4)), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("s24"));
}

TEST_F(WindowClassifierTest, LateCopiesOfTwoNodesDoNotCountAsOneThatAdvances) {
  for (int first = 0; first <= 60; ++first) Follow(first, Names(first, 30));
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(Follow(20 + i, Names(20 + i, 30)), Verdict::kLateCopy);
    EXPECT_EQ(Follow(38 + i, Names(38 + i, 30)), Verdict::kLateCopy);
  }
}

TEST_F(WindowClassifierTest, OlderWindowWithAnUnknownKeyIsNoLateCopy) {
  Follow(100, Names(100, 3));
  EXPECT_EQ(Follow(98, Names(98, 3)), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("s98", "s99"));
}

// --- Restarts ---

TEST_F(WindowClassifierTest, SameNamesUnderSmallerNumbersRestartAtOnce) {
  Follow(100, Names(0, 3));
  EXPECT_EQ(Follow(0, Names(0, 1)), Verdict::kRestart);
  EXPECT_THAT(new_, ElementsAre("s0"));
  EXPECT_EQ(Follow(0, Names(0, 2)), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("s1"));
}

TEST_F(WindowClassifierTest, RestartThatDoesNotAdvancePlaysOnce) {
  Follow(100, Names(0, 3));
  EXPECT_EQ(Follow(0, Names(0, 3)), Verdict::kRestart);
  for (int i = 0; i < 30; ++i) EXPECT_EQ(Follow(0, Names(0, 3)), Verdict::kGoesOn);
  EXPECT_THAT(new_, IsEmpty());
}

TEST_F(WindowClassifierTest, SecondRestartIsDetectedToo) {
  Follow(100, Names(0, 3));
  EXPECT_EQ(Follow(50, Names(0, 3)), Verdict::kRestart);
  EXPECT_EQ(Follow(0, Names(0, 3)), Verdict::kRestart);
}

TEST_F(WindowClassifierTest, RestartWithKnownAndUnknownKeysPlaysAllOfThem) {
  Follow(100, Names(5, 3));
  EXPECT_EQ(Follow(0, Names(6, 3)), Verdict::kRestart);
  EXPECT_EQ(new_, Names(6, 3));
}

TEST_F(WindowClassifierTest, NewNamesUnderSmallerNumbersGoOnAtOnce) {
  ProveNumbers(100, 3);
  EXPECT_EQ(Follow(0, {"new0"}), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("new0"));
  EXPECT_EQ(Follow(0, {"new0", "new1"}), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("new1"));
}

TEST_F(WindowClassifierTest, LateCopiesAreJudgedByTheNumbersOfTheNewNames) {
  ProveNumbers(100, 3);
  Follow(5, {"new5", "new6"});
  Follow(6, {"new6", "new7"});
  EXPECT_EQ(Follow(5, {"new5", "new6"}), Verdict::kLateCopy);
  EXPECT_EQ(Follow(104, Names(104, 3)), Verdict::kGoesOn) << "a late copy of the previous run";
  EXPECT_THAT(new_, IsEmpty());
  EXPECT_EQ(Follow(6, {"new6", "new7", "new8"}), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("new8"));
}

TEST_F(WindowClassifierTest, NewNamesUnderUsedNumbersGoOn) {
  for (int first = 0; first < 20; ++first) Follow(first, Names(first, 3));
  EXPECT_EQ(Follow(0, {"new0", "new1"}), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("new0", "new1"));
}

TEST_F(WindowClassifierTest, LateCopiesOfThePreviousRunPlayNothing) {
  ProveNumbers(100, 3);
  EXPECT_EQ(Follow(0, Names(100, 3)), Verdict::kRestart);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(Follow(104, Names(104, 3)), Verdict::kLateCopy);
    EXPECT_EQ(Follow(i, Names(100 + i, 3)), Verdict::kGoesOn);
    EXPECT_EQ(new_.size(), i == 0 ? 0U : 1U);
  }
}

TEST_F(WindowClassifierTest, PreviousRunIsForgottenAfterManyCorrectNumbers) {
  Follow(1'000, Names(0, 3));
  Follow(0, Names(0, 3));
  EXPECT_EQ(classifier_.Size(), 6U);
  for (int first = 1; first <= 12; ++first) Follow(first, Names(first, 3));
  EXPECT_EQ(classifier_.Size(), 15U);
}

TEST_F(WindowClassifierTest, RestartUnderTheSameNamesAndNumbersIsBelievedAfterManySteps) {
  for (int first = 0; first <= 50; ++first) Follow(first, Names(first, 3));
  int restarted_at = -1;
  for (int first = 0; first < 50 && restarted_at < 0; ++first) {
    if (Follow(first, Names(first, 3)) == Verdict::kRestart) restarted_at = first;
  }
  EXPECT_EQ(restarted_at, 13);
  EXPECT_EQ(new_, Names(13, 3));
  EXPECT_EQ(Follow(14, Names(14, 3)), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("s16"));
}

TEST_F(WindowClassifierTest, GrowingRestartUnderTheSameNamesAndNumbersIsBelievedToo) {
  for (int first = 0; first <= 50; ++first) Follow(first, Names(first, 3));
  for (int count = 1; count <= 13; ++count) {
    EXPECT_EQ(Follow(0, Names(0, count)), Verdict::kLateCopy);
  }
  EXPECT_EQ(Follow(0, Names(0, 14)), Verdict::kRestart);
}

// --- Rings of names ---

class SequenceRingTest : public WindowClassifierTest,
                         public testing::WithParamInterface<std::pair<int, int>> {};

INSTANTIATE_TEST_SUITE_P(, SequenceRingTest,
                         testing::Values(std::pair(8, 8), std::pair(8, 5), std::pair(8, 1 + 1),
                                         std::pair(3, 3), std::pair(1'500, 6),
                                         std::pair(1'300, 1'200)),
                         [](const auto& ring) {
                           return std::to_string(ring.param.first) + "NamesInWindowsOf" +
                                  std::to_string(ring.param.second);
                         });

TEST_P(SequenceRingTest, EverySegmentIsNewOnceAndInOrder) {
  const auto [names, length] = GetParam();
  Keys played;
  const int windows = names - length + 200;
  for (int first = 0; first < windows; ++first) {
    const Keys window = RingNames(first, length, names);
    EXPECT_EQ(Follow(first, window), Verdict::kGoesOn);
    played.insert(played.end(), new_.begin(), new_.end());
    EXPECT_EQ(Follow(first, window), Verdict::kGoesOn);
    EXPECT_THAT(new_, IsEmpty()) << "the window has not advanced";
  }
  EXPECT_EQ(played, RingNames(0, windows - 1 + length, names));
}

TEST_F(WindowClassifierTest, RingSeenEveryFewSegmentsGoesOn) {
  for (int first = 0; first < 120; first += 3) {
    Follow(first, RingNames(first, 5, 8));
    EXPECT_EQ(new_.size(), first == 0 ? 5U : 3U);
  }
}

TEST_F(WindowClassifierTest, RingWithCorrectNumbersGoesOnAfterAGap) {
  for (int first = 0; first < 10; ++first) Follow(first, RingNames(first, 5, 8));
  Follow(17, RingNames(17, 5, 8));  // reuses the names of 9 to 13
  EXPECT_EQ(new_, RingNames(17, 5, 8));
}

TEST_F(WindowClassifierTest, RingWhoseWindowGrowsBeforeItAdvancesGoesOn) {
  Follow(0, RingNames(0, 4, 8));
  Follow(4, RingNames(4, 4, 8));
  EXPECT_EQ(Follow(4, RingNames(4, 6, 8)), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("r0", "r1"));
}

TEST_F(WindowClassifierTest, LateCopiesOfARingPlayNothing) {
  for (int first = 0; first < 100; ++first) {
    EXPECT_EQ(Follow(first, RingNames(first, 5, 8)), Verdict::kGoesOn);
    EXPECT_EQ(new_.size(), first == 0 ? 5U : 1U);
    if (first < 6) continue;
    EXPECT_EQ(Follow(first - 6, RingNames(first - 6, 5, 8)), Verdict::kLateCopy);
  }
}

TEST_F(WindowClassifierTest, KeyListedTwiceIsOneSegment) {
  Follow(10, {"filler", "s1", "filler"});
  EXPECT_THAT(new_, ElementsAre("filler", "s1"));
  Follow(11, {"s1", "filler", "s2", "filler"});
  EXPECT_THAT(new_, ElementsAre("s2"));
  Follow(13, {"s2", "filler", "s3"});
  EXPECT_THAT(new_, ElementsAre("s3"));
  EXPECT_EQ(Follow(11, {"s1", "filler", "s2", "filler"}), Verdict::kLateCopy)
      << "the numbers are still believed";
}

TEST_F(WindowClassifierTest, NamesReusedUnderRisingNumbersAreNew) {
  ProveNumbers(0, 3);  // the last window starts at 4
  EXPECT_EQ(Follow(7, Names(0, 3)), Verdict::kGoesOn);
  EXPECT_EQ(new_, Names(0, 3));
  EXPECT_EQ(Follow(8, Names(1, 3)), Verdict::kGoesOn);
  EXPECT_THAT(new_, ElementsAre("s3"));
}

// --- Servers whose numbers do not count segments ---
//
// Every segment must be new once, and in order.

class SequenceBrokenNumbersTest : public WindowClassifierTest {
 protected:
  // Follows a window that advances by one segment whenever `slides` returns true. `number` returns
  // its media sequence number.
  template <typename Slides, typename Number>
  void ExpectEachOnce(int length, Slides slides, Number number) {
    Keys played;
    int first = 0;
    for (int refresh = 0; refresh < 200; ++refresh) {
      if (refresh > 0 && slides(refresh)) ++first;
      EXPECT_EQ(Follow(number(refresh, first), Names(first, length)), Verdict::kGoesOn);
      played.insert(played.end(), new_.begin(), new_.end());
    }
    EXPECT_EQ(played, Names(0, first + length));
  }
  template <typename Number>
  void ExpectEachOnce(Number number) {
    const auto always = [](int) { return true; };
    const auto sometimes = [](int refresh) { return refresh % 3 == 0; };
    for (const int length : {1, 2, 3, 6, 20}) {
      SCOPED_TRACE(length);
      Restart();
      ExpectEachOnce(length, always, number);
      Restart();
      ExpectEachOnce(length, sometimes, number);
    }
  }
  void Restart() {
    classifier_ = WindowClassifier();
    known_.clear();
  }
};

TEST_F(SequenceBrokenNumbersTest, NumberThatNeverChanges) {
  ExpectEachOnce([](int, int) { return 0; });
  ExpectEachOnce([](int, int) { return 1; });
  ExpectEachOnce([](int, int) { return 1'000; });
}

TEST_F(SequenceBrokenNumbersTest, NumberThatCountsRefreshes) {
  ExpectEachOnce([](int refresh, int) { return refresh; });
}

TEST_F(SequenceBrokenNumbersTest, NumberThatIsTheTime) {
  ExpectEachOnce([](int refresh, int) { return 1'700'000'000 + refresh; });
  ExpectEachOnce([](int refresh, int) { return 1'700'000'000 + refresh * 10; });
}

TEST_F(SequenceBrokenNumbersTest, NumberThatIsTheTimeOfTheLastAdvance) {
  ExpectEachOnce([](int, int first) { return 1'700'000'000 + first * 10; });
  ExpectEachOnce([](int, int first) { return 1'700'000'000 + first * 2; });
}

TEST_F(SequenceBrokenNumbersTest, NumberThatStopsAfterAWhile) {
  ExpectEachOnce([](int, int first) { return first < 20 ? first : 20; });
}

TEST_F(SequenceBrokenNumbersTest, NumberThatRunsAheadAfterAWhile) {
  for (const int length : {2, 3, 6, 20}) {
    Restart();
    ExpectEachOnce(
        length, [](int) { return true; },
        [](int, int first) { return first < 20 ? first : 20 + (first - 20) * 2; });
  }
}

TEST_F(WindowClassifierTest, NumbersThatJumpAfterAWhilePlayNothingAgain) {
  std::size_t played = 0;
  for (int first = 0; first < 60; ++first) {
    Follow(first < 20 ? first : first * 100, Names(first, 3));
    played += new_.size();
  }
  EXPECT_EQ(played, 62U);
}

TEST_F(WindowClassifierTest, WrongNumbersAreBelievedAfterManyCorrectOnes) {
  Follow(0, Names(0, 3));
  Follow(0, Names(1, 3));
  int first = 2;
  for (; first < 14; ++first) {
    Follow(first, Names(first, 3));
    EXPECT_EQ(Follow(first - 1, Names(first - 1, 3)), Verdict::kGoesOn) << "only the keys decide";
    EXPECT_THAT(new_, IsEmpty());
  }
  for (; first < 30; ++first) Follow(first, Names(first, 3));
  EXPECT_EQ(Follow(20, Names(20, 3)), Verdict::kLateCopy);
}

TEST_F(WindowClassifierTest, ServersThatNumberTheSameSegmentsDifferentlyReplayThemAtMostOnce) {
  std::size_t played = 0;
  for (int first = 0; first < 100; ++first) {
    Follow(first + 1'000, Names(first, 3));
    played += new_.size();
    Follow(first, Names(first, 3));
    played += new_.size();
  }
  EXPECT_LE(played, 102U + 3U);
}

// --- Limits ---

TEST_F(WindowClassifierTest, MemoryIsBoundedOverAStreamOfDays) {
  for (int first = 0; first < 10'000; ++first) Follow(first, Names(first, 6));
  EXPECT_LE(classifier_.Size(), 2 * WindowClassifier::kRemembered);
  EXPECT_GE(classifier_.Size(), WindowClassifier::kRemembered);
}

TEST_F(WindowClassifierTest, LateCopyFromAThousandSegmentsAgoIsDetected) {
  for (int first = 0; first < 5'000; ++first) Follow(first, Names(first, 6));
  EXPECT_EQ(Follow(4'000, Names(4'000, 6)), Verdict::kLateCopy);
}

TEST_F(WindowClassifierTest, LongWindowIsRememberedWhole) {
  Follow(0, Names(0, 20'000));
  Follow(3, Names(3, 20'000));
  EXPECT_EQ(Follow(0, Names(0, 20'000)), Verdict::kLateCopy);
}

TEST_F(WindowClassifierTest, LargestAndSmallestNumbersDoNotOverflow) {
  Follow(kLargest, Names(0, 1));
  EXPECT_EQ(Follow(kLargest, Names(0, 1)), Verdict::kGoesOn);
  EXPECT_EQ(Follow(kSmallest, Names(0, 1)), Verdict::kRestart);
  EXPECT_EQ(Follow(kSmallest + 1, Names(1, 3)), Verdict::kGoesOn);
  EXPECT_EQ(Follow(kSmallest + 2, Names(2, 3)), Verdict::kGoesOn);
  EXPECT_EQ(Follow(kLargest, Names(0, 1)), Verdict::kLateCopy) << "of the previous run";
  for (std::int64_t i = 0; i < 20; ++i) {
    Follow(kSmallest + i, Names(static_cast<int>(i), 3));
    Follow(kLargest - 2, Names(static_cast<int>(i), 3));
  }
}

// --- One classifier for each playlist ---

class WindowClassifiersTest : public testing::Test {
 protected:
  Verdict Follow(const std::string& source, std::int64_t first) {
    return classifiers_.Of(source).Follow({first, {{first, "a"}}});
  }

  WindowClassifiers classifiers_;
};

TEST_F(WindowClassifiersTest, PlaylistsAreNotComparedWithEachOther) {
  EXPECT_EQ(Follow("low", 100), Verdict::kGoesOn);
  EXPECT_EQ(Follow("high", 1), Verdict::kGoesOn);
  EXPECT_EQ(Follow("low", 100), Verdict::kGoesOn);
  EXPECT_EQ(Follow("low", 2), Verdict::kRestart) << "compared with 100";
}

TEST_F(WindowClassifiersTest, LastUsedPlaylistsAreRemembered) {
  Follow("first", 100);
  for (std::size_t i = 0; i < WindowClassifiers::kRememberedSources; ++i) {
    EXPECT_LE(classifiers_.Size(), WindowClassifiers::kRememberedSources);
    Follow(std::to_string(i), 100);
  }
  EXPECT_EQ(Follow("0", 1), Verdict::kRestart);
  EXPECT_EQ(Follow("first", 1), Verdict::kGoesOn) << "forgotten";
}

TEST_F(WindowClassifiersTest, ForgetOthersKeepsOnlyTheLastUsedPlaylist) {
  Follow("low", 100);
  Follow("high", 100);
  classifiers_.ForgetOthers();
  EXPECT_EQ(classifiers_.Size(), 1U);
  EXPECT_EQ(Follow("high", 1), Verdict::kRestart);
  classifiers_.Clear();
  classifiers_.ForgetOthers();
  EXPECT_EQ(Follow("high", 0), Verdict::kGoesOn);
}

}  // namespace
}  // namespace stream
