#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <set>
#include <utility>
#include <vector>

#include "mp4/downloaded_ranges.h"

namespace stream {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

DownloadedRanges Ranges(const std::vector<std::pair<std::uint64_t, std::uint64_t>>& added) {
  DownloadedRanges ranges;
  for (const auto& [start, end] : added) ranges.Add(start, end);
  return ranges;
}

TEST(DownloadedRangesTest, EmptyRangesContainNothing) {
  const DownloadedRanges ranges;
  EXPECT_THAT(ranges.All(), IsEmpty());
  EXPECT_FALSE(ranges.Contains(0, 0));
  EXPECT_FALSE(ranges.First().Contains(0, 1));
  EXPECT_EQ(ranges.EndOfRangeAt(7), 7U);
}

TEST(DownloadedRangesTest, AdjacentPiecesAreOneRange) {
  EXPECT_THAT(Ranges({{0, 10}, {10, 20}, {20, 21}}).All(), ElementsAre(Pair(0, 21)));
}

TEST(DownloadedRangesTest, RangeAfterAGapIsSeparate) {
  EXPECT_THAT(Ranges({{0, 10}, {50, 60}}).All(), ElementsAre(Pair(0, 10), Pair(50, 60)));
}

TEST(DownloadedRangesTest, RangesThatMeetAreMerged) {
  EXPECT_THAT(Ranges({{0, 10}, {50, 60}, {10, 50}}).All(), ElementsAre(Pair(0, 60)));
}

TEST(DownloadedRangesTest, FirstRangeThatGrowsOverSeveralIsMergedWithThem) {
  EXPECT_THAT(Ranges({{0, 10}, {20, 30}, {40, 50}, {90, 99}, {10, 45}}).All(),
              ElementsAre(Pair(0, 50), Pair(90, 99)));
}

TEST(DownloadedRangesTest, ExtensionOfALaterRangeIsNotMergedWithIt) {
  EXPECT_THAT(Ranges({{0, 10}, {50, 60}, {60, 70}}).All(),
              ElementsAre(Pair(0, 10), Pair(50, 60), Pair(60, 70)));
}

TEST(DownloadedRangesTest, RangeWithANewStartIsNotMergedWithLaterOnes) {
  EXPECT_THAT(Ranges({{0, 10}, {50, 60}, {40, 55}}).All(),
              ElementsAre(Pair(0, 10), Pair(40, 55), Pair(50, 60)));
}

TEST(DownloadedRangesTest, RangeWithAKnownStartIsMergedWithLaterOnes) {
  EXPECT_THAT(Ranges({{0, 10}, {40, 45}, {50, 60}, {40, 55}}).All(),
              ElementsAre(Pair(0, 10), Pair(40, 60)));
}

TEST(DownloadedRangesTest, RangeBeforeAllOthersIsNotMerged) {
  EXPECT_THAT(Ranges({{50, 60}, {0, 50}}).All(), ElementsAre(Pair(0, 50), Pair(50, 60)));
}

TEST(DownloadedRangesTest, BytesInsideTheFirstRangeChangeNothing) {
  EXPECT_THAT(Ranges({{0, 100}, {0, 10}, {20, 30}, {90, 100}}).All(), ElementsAre(Pair(0, 100)));
}

TEST(DownloadedRangesTest, BytesAreContainedUpToTheEndOfARange) {
  const DownloadedRanges ranges = Ranges({{0, 10}, {50, 60}});
  EXPECT_TRUE(ranges.Contains(0, 10));
  EXPECT_TRUE(ranges.Contains(50, 10));
  EXPECT_TRUE(ranges.Contains(55, 5));
  EXPECT_TRUE(ranges.Contains(10, 0));
  EXPECT_FALSE(ranges.Contains(0, 11));
  EXPECT_FALSE(ranges.Contains(49, 2));
  EXPECT_FALSE(ranges.Contains(9, 50));
}

TEST(DownloadedRangesTest, SampleAcrossTheEndOfTheFirstRangeIsNotContainedUntilTheRangeGrows) {
  DownloadedRanges ranges = Ranges({{0, 10}});
  EXPECT_FALSE(ranges.First().Contains(8, 4));
  ranges.Add(10, 11);
  EXPECT_FALSE(ranges.First().Contains(8, 4));
  ranges.Add(11, 12);
  EXPECT_TRUE(ranges.First().Contains(8, 4));
}

TEST(DownloadedRangesTest, SampleInsideTheSecondRangeIsNotContainedInTheFirst) {
  const DownloadedRanges ranges = Ranges({{0, 10}, {50, 60}});
  EXPECT_TRUE(ranges.Contains(52, 3));
  EXPECT_FALSE(ranges.First().Contains(52, 3));
}

TEST(DownloadedRangesTest, SampleBeforeTheFirstRangeIsNotContained) {
  EXPECT_FALSE(Ranges({{50, 60}}).First().Contains(49, 2));
  EXPECT_TRUE(Ranges({{50, 60}}).First().Contains(50, 2));
}

TEST(DownloadedRangesTest, OffsetInARangeMovesToItsEndOnlyOnce) {
  const DownloadedRanges ranges = Ranges({{5, 10}, {20, 30}, {30, 40}});
  EXPECT_EQ(ranges.EndOfRangeAt(4), 4U);
  EXPECT_EQ(ranges.EndOfRangeAt(5), 10U);
  EXPECT_EQ(ranges.EndOfRangeAt(9), 10U);
  EXPECT_EQ(ranges.EndOfRangeAt(10), 10U);
  EXPECT_EQ(ranges.EndOfRangeAt(25), 30U) << "the range that starts there is ignored";
}

TEST(DownloadedRangesTest, LocalFileContainsEverythingBelowItsLimit) {
  DownloadedRanges ranges;
  ranges.MarkLocalFile();
  EXPECT_THAT(ranges.All(), ElementsAre(Pair(0, 999'999'999)));
  EXPECT_TRUE(ranges.First().Contains(0, 999'999'999));
  EXPECT_FALSE(ranges.First().Contains(999'999'998, 2));
  EXPECT_TRUE(ranges.Contains(999'999'998, 1));
}

TEST(DownloadedRangesTest, OffsetsAndSizesThatWrapAroundAreNotContained) {
  const DownloadedRanges ranges = Ranges({{0, 100}});
  for (const std::uint64_t huge : {UINT64_MAX, UINT64_MAX - 5, UINT64_MAX / 2 + 1}) {
    EXPECT_FALSE(ranges.Contains(10, huge));
    EXPECT_FALSE(ranges.First().Contains(10, huge));
    EXPECT_FALSE(ranges.Contains(huge, huge));
    EXPECT_FALSE(ranges.First().Contains(huge, 10));
  }
}

TEST(DownloadedRangesTest, ClearedRangesContainNothing) {
  DownloadedRanges ranges = Ranges({{0, 10}});
  ranges.Clear();
  EXPECT_FALSE(ranges.First().Contains(0, 1));
  EXPECT_FALSE(ranges.Contains(0, 1));
  EXPECT_FALSE(ranges.Contains(0, 0));
  ranges.Add(2, 5);
  EXPECT_TRUE(ranges.Contains(2, 3));
}

// A download after a seek adds such ranges. There are so many that checking every range would take
// half a minute.
TEST(DownloadedRangesTest, PiecesAfterAGapAreSeparateRanges) {
  constexpr std::uint64_t kPiece = 10;
  constexpr std::uint64_t kPieces = 100'000;
  DownloadedRanges ranges = Ranges({{0, kPiece}});
  for (std::uint64_t i = 2; i < kPieces; ++i) {
    ASSERT_FALSE(ranges.Contains(i * kPiece, kPiece));
    ranges.Add(i * kPiece, (i + 1) * kPiece);
  }
  EXPECT_EQ(ranges.All().size(), kPieces - 1);
  EXPECT_TRUE(ranges.Contains(kPieces / 2 * kPiece, kPiece));
}

// A reference model: the same rules over a list sorted by start.
class PlainRanges {
 public:
  void Add(std::uint64_t old, std::uint64_t new_end) {
    for (const auto& range : list_) {
      if (range.first > old) continue;
      if (old <= range.second) {
        old = range.first;
        new_end = std::max(new_end, range.second);
      }
      break;
    }
    if (const std::size_t at = Find(old); at < list_.size()) {
      while (at + 1 < list_.size() && list_[at + 1].first <= new_end) {
        new_end = std::max(new_end, list_[at + 1].second);
        list_.erase(list_.begin() + static_cast<std::ptrdiff_t>(at) + 1);
      }
      list_[at].second = new_end;
      return;
    }
    list_.emplace_back(old, new_end);
    std::sort(list_.begin(), list_.end());
  }

  bool Contains(std::uint64_t start, std::uint64_t size) const {
    for (const auto& range : list_) {
      if (range.first <= start && start + size <= range.second) return true;
    }
    return false;
  }

  bool FirstContains(std::uint64_t start, std::uint64_t size) const {
    for (const auto& range : list_) {
      if (range.first <= start) return start + size <= range.second;
    }
    return false;
  }

  std::uint64_t EndOfRangeAt(std::uint64_t offset) const {
    for (const auto& range : list_) {
      if (range.first <= offset && offset < range.second) return range.second;
    }
    return offset;
  }

  const std::vector<std::pair<std::uint64_t, std::uint64_t>>& All() const { return list_; }

 private:
  std::size_t Find(std::uint64_t start) const {
    std::size_t at = 0;
    while (at < list_.size() && list_[at].first != start) ++at;
    return at;
  }

  std::vector<std::pair<std::uint64_t, std::uint64_t>> list_;
};

constexpr std::uint64_t kSpace = 100;  // limit of the random offsets

void ExpectSameAnswers(const DownloadedRanges& ranges, const PlainRanges& plain) {
  ASSERT_TRUE(std::equal(
      ranges.All().begin(), ranges.All().end(), plain.All().begin(), plain.All().end(),
      [](const auto& a, const auto& b) { return a.first == b.first && a.second == b.second; }));
  for (std::uint64_t at = 0; at <= kSpace; at += 3) {
    ASSERT_EQ(ranges.EndOfRangeAt(at), plain.EndOfRangeAt(at));
    for (const std::uint64_t size : {0U, 1U, 5U, 30U}) {
      ASSERT_EQ(ranges.Contains(at, size), plain.Contains(at, size)) << at << "+" << size;
      ASSERT_EQ(ranges.First().Contains(at, size), plain.FirstContains(at, size))
          << at << "+" << size;
    }
  }
}

TEST(DownloadedRangesTest, RandomRangesMatchTheReferenceModel) {
  for (unsigned seed = 0; seed < 500; ++seed) {
    SCOPED_TRACE(seed);
    std::minstd_rand random(seed + 1);
    DownloadedRanges ranges;
    PlainRanges plain;
    for (int step = 0; step < 20; ++step) {
      const std::uint64_t start = random() % kSpace;
      const std::uint64_t end = start + random() % (seed % 2 == 0 ? 8 : 40);
      ranges.Add(start, end);
      plain.Add(start, end);
      ASSERT_NO_FATAL_FAILURE(ExpectSameAnswers(ranges, plain));
    }
  }
}

// Like the download, does not add bytes that are already contained.
TEST(DownloadedRangesTest, RangesCoverExactlyTheWrittenBytes) {
  for (unsigned seed = 0; seed < 500; ++seed) {
    std::minstd_rand random(seed + 1);
    DownloadedRanges ranges;
    std::set<std::uint64_t> written;
    for (int step = 0; step < 30; ++step) {
      const std::uint64_t start = random() % kSpace;
      const std::uint64_t size = 1 + random() % 20;
      if (!ranges.Contains(start, size)) ranges.Add(start, start + size);
      for (std::uint64_t at = start; at < start + size; ++at) written.insert(at);
    }
    std::set<std::uint64_t> covered;
    for (const auto& [start, end] : ranges.All()) {
      for (std::uint64_t at = start; at < end; ++at) covered.insert(at);
    }
    ASSERT_EQ(covered, written) << "seed " << seed;
  }
}

}  // namespace
}  // namespace stream
