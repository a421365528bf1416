#include <gtest/gtest.h>

#include <string>

#include "hls/segment_ledger.h"

namespace stream {
namespace {

class TakenSegmentsTest : public testing::Test {
 protected:
  // Takes `count` names starting with "s<first>". Returns how many of them were new.
  int Take(int first, int count, std::size_t limit) {
    int taken = 0;
    for (int i = first; i < first + count; ++i) {
      if (segments_.InsertIfNew("s" + std::to_string(i), limit)) ++taken;
    }
    return taken;
  }

  TakenSegments segments_;
};

TEST_F(TakenSegmentsTest, SegmentIsTakenOnce) {
  EXPECT_TRUE(segments_.InsertIfNew("a.ts", 1000));
  EXPECT_FALSE(segments_.InsertIfNew("a.ts", 1000));
  EXPECT_EQ(segments_.Size(), 1U);
}

TEST_F(TakenSegmentsTest, QueryIsPartOfTheKey) {
  EXPECT_TRUE(segments_.InsertIfNew("a.ts?1", 1000));
  EXPECT_TRUE(segments_.InsertIfNew("a.ts?2", 1000));
}

TEST_F(TakenSegmentsTest, OneMoreThanTheLimitIsKept) {
  EXPECT_EQ(Take(0, 1001, 1000), 1001);
  EXPECT_EQ(segments_.Size(), 1001U);
  EXPECT_EQ(Take(0, 1001, 1000), 0) << "all of them are still known";
  EXPECT_EQ(Take(1001, 500, 1000), 500);
  EXPECT_EQ(segments_.Size(), 1001U);
}

TEST_F(TakenSegmentsTest, LeastRecentlySeenSegmentIsForgottenWhateverItsName) {
  Take(9, 4, 3);  // s9, s10, s11 and s12; s9 sorts last
  EXPECT_TRUE(segments_.InsertIfNew("s13", 3));
  EXPECT_EQ(Take(10, 4, 3), 0);
  EXPECT_TRUE(segments_.InsertIfNew("s9", 3));
}

TEST_F(TakenSegmentsTest, SegmentSeenAgainCountsAsRecent) {
  Take(0, 4, 3);
  EXPECT_FALSE(segments_.InsertIfNew("s0", 3));
  EXPECT_TRUE(segments_.InsertIfNew("s4", 3));
  EXPECT_FALSE(segments_.InsertIfNew("s0", 3));
  EXPECT_TRUE(segments_.InsertIfNew("s1", 3)) << "it was forgotten instead";
}

TEST_F(TakenSegmentsTest, SmallerLimitForgetsAllSegmentsAboveIt) {
  Take(0, 11, 10);
  EXPECT_TRUE(segments_.InsertIfNew("next", 2));
  EXPECT_EQ(segments_.Size(), 3U);
}

TEST_F(TakenSegmentsTest, LimitOfZeroKeepsTheLastSegment) {
  EXPECT_EQ(Take(0, 3, 0), 3);
  EXPECT_EQ(segments_.Size(), 1U);
  EXPECT_FALSE(segments_.InsertIfNew("s2", 0));
}

TEST_F(TakenSegmentsTest, ForgottenSegmentsAreTakenAgain) {
  Take(0, 5, 1000);
  segments_.Clear();
  EXPECT_EQ(segments_.Size(), 0U);
  EXPECT_EQ(Take(0, 5, 1000), 5);
}

}  // namespace
}  // namespace stream
