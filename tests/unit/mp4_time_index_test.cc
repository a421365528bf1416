#include "mp4/mp4_time_index.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <optional>

namespace stream {
namespace {

Mp4TimeIndex ThreeSamples() {
  Mp4TimeIndex index;
  index.Record(0, {1, 100});
  index.Record(40, {2, 200});
  index.Record(80, {3, 300});
  return index;
}

void ExpectFound(const std::optional<Mp4TimeIndex::Found>& found, MP4SampleId id,
                 std::uint64_t offset, bool reaches_target) {
  ASSERT_TRUE(found.has_value());
  EXPECT_EQ(found->location.id, id);
  EXPECT_EQ(found->location.offset, offset);
  EXPECT_EQ(found->reaches_target, reaches_target);
}

TEST(Mp4TimeIndexTest, EmptyIndexFindsNothing) { EXPECT_FALSE(Mp4TimeIndex().Find(0).has_value()); }

TEST(Mp4TimeIndexTest, SampleAtTheExactTimeIsFound) {
  ExpectFound(ThreeSamples().Find(40), 2, 200, true);
}

TEST(Mp4TimeIndexTest, NextSampleIsFoundIfNoneIsAtTheTime) {
  ExpectFound(ThreeSamples().Find(41), 3, 300, true);
  ExpectFound(ThreeSamples().Find(0.5F), 2, 200, true);
}

TEST(Mp4TimeIndexTest, TimeBeforeAllSamplesFindsTheFirst) {
  ExpectFound(ThreeSamples().Find(-1000), 1, 100, true);
}

TEST(Mp4TimeIndexTest, TimeAfterAllSamplesFindsTheLastWithoutReachingIt) {
  ExpectFound(ThreeSamples().Find(80.5F), 3, 300, false);
}

TEST(Mp4TimeIndexTest, NanFindsTheLast) {
  ExpectFound(ThreeSamples().Find(std::nanf("")), 3, 300, false);
}

TEST(Mp4TimeIndexTest, SampleOfTheSameTimeReplacesTheEarlierOne) {
  Mp4TimeIndex index = ThreeSamples();
  index.Record(40, {7, 700});
  ExpectFound(index.Find(40), 7, 700, true);
  ExpectFound(index.Find(41), 3, 300, true);
}

TEST(Mp4TimeIndexTest, SamplesRecordedInAnyOrderAreFoundByTime) {
  Mp4TimeIndex index;
  index.Record(80, {3, 300});
  index.Record(0, {1, 100});
  index.Record(40, {2, 200});
  ExpectFound(index.Find(1), 2, 200, true);
}

TEST(Mp4TimeIndexTest, LargestTimeIsFoundToo) {
  Mp4TimeIndex index;
  index.Record(std::numeric_limits<std::uint64_t>::max(), {9, 900});
  ExpectFound(index.Find(1e18F), 9, 900, true);
}

TEST(Mp4TimeIndexTest, SamplesAboveTheCapacityAreNotRecorded) {
  Mp4TimeIndex index;
  for (std::uint32_t i = 0; i < Mp4TimeIndex::kMaxEntries + 10; ++i) index.Record(i, {i + 1, i});
  constexpr std::uint32_t kLast = Mp4TimeIndex::kMaxEntries - 1;
  ExpectFound(index.Find(kLast), kLast + 1, kLast, true);
  ExpectFound(index.Find(kLast + 1), kLast + 1, kLast, false);
}

}  // namespace
}  // namespace stream
