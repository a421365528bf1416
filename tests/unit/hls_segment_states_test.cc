#include "hls/segment_states.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(SegmentKeyTest, AddressIsCutBeforeItsFirstQuestionMark) {
  EXPECT_EQ(MakeSegmentKey("http://h/a.ts?x=1?y=2"), "http://h/a.ts");
}

TEST(SegmentKeyTest, AddressWithoutAQueryIsKeptWhole) {
  EXPECT_EQ(MakeSegmentKey("http://h/a.ts"), "http://h/a.ts");
  EXPECT_EQ(MakeSegmentKey(""), "");
}

TEST(SegmentKeyTest, AddressThatBeginsWithAQuestionMarkIsKeptWhole) {
  EXPECT_EQ(MakeSegmentKey("?a.ts?b"), "?a.ts?b");
  EXPECT_EQ(MakeSegmentKey("?"), "?");
}

class SegmentStatesTest : public testing::Test {
 protected:
  SegmentStatesTest() { ForgetAllSegments(); }
  ~SegmentStatesTest() override { ForgetAllSegments(); }

  // The console output of RemoveStaleSegments.
  static std::string Remove(const M3u8Table& current, std::int32_t state) {
    testing::internal::CaptureStdout();
    RemoveStaleSegments(current, state);
    return testing::internal::GetCapturedStdout();
  }

  static M3u8Table Table(const std::vector<std::string>& uris) {
    M3u8Table table;
    for (const std::string& uri : uris) {
      table.emplace(static_cast<std::int32_t>(table.size()), M3u8Entry{uri});
    }
    return table;
  }

  // Whether the segment is known. Adds it if not.
  static bool IsKnown(const std::string& uri) { return !AddSegmentIfNew(uri, kSegmentQueued); }
};

TEST_F(SegmentStatesTest, SegmentIsAddedOnceWhateverItsQuery) {
  EXPECT_TRUE(AddSegmentIfNew("a.ts?1", kSegmentQueued));
  EXPECT_FALSE(AddSegmentIfNew("a.ts?2", kSegmentQueued));
  EXPECT_FALSE(AddSegmentIfNew("a.ts", kSegmentDownloaded));
  EXPECT_EQ(KnownSegments(), 1U);
}

TEST_F(SegmentStatesTest, SecondAddDoesNotChangeTheState) {
  AddSegmentIfNew("a.ts", kSegmentQueued);
  AddSegmentIfNew("a.ts", kSegmentDownloaded);
  EXPECT_EQ(Remove({}, kSegmentDownloaded), "");
}

TEST_F(SegmentStatesTest, StateIsSetWhateverTheQuery) {
  AddSegmentIfNew("a.ts?1", kSegmentQueued);
  SetSegmentState("a.ts?other", kSegmentDownloaded);
  EXPECT_EQ(Remove({}, kSegmentDownloaded), "[REMOVE]: a.ts\n");
}

TEST_F(SegmentStatesTest, StateOfAnUnknownSegmentIsNotSet) {
  SetSegmentState("a.ts", kSegmentDownloaded);
  EXPECT_EQ(KnownSegments(), 0U);
}

TEST_F(SegmentStatesTest, RemovalKeepsListedSegmentsAndThoseInAnotherState) {
  AddSegmentIfNew("c.ts", kSegmentDownloaded);
  AddSegmentIfNew("b.ts", kSegmentQueued);
  AddSegmentIfNew("a.ts?q", kSegmentDownloaded);
  AddSegmentIfNew("d.ts", kSegmentDownloaded);
  EXPECT_EQ(Remove(Table({"d.ts?now"}), kSegmentDownloaded), "[REMOVE]: a.ts\n[REMOVE]: c.ts\n");
  EXPECT_TRUE(IsKnown("b.ts") && IsKnown("d.ts"));
  EXPECT_FALSE(IsKnown("a.ts") || IsKnown("c.ts"));
}

TEST_F(SegmentStatesTest, RemovalOfQueuedSegmentsKeepsDownloadedOnes) {
  AddSegmentIfNew("a.ts", kSegmentQueued);
  AddSegmentIfNew("b.ts", kSegmentDownloaded);
  EXPECT_EQ(Remove({}, kSegmentQueued), "[REMOVE]: a.ts\n");
  EXPECT_EQ(KnownSegments(), 1U);
}

TEST_F(SegmentStatesTest, DoneSegmentThatIsNotListedIsForgottenWithoutALine) {
  AddSegmentIfNew("a.ts", kSegmentQueued);
  RecordSegmentDone("a.ts?query");
  testing::internal::CaptureStdout();
  ForgetDoneSegments({"b.ts"});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(KnownSegments(), 0U);
}

TEST_F(SegmentStatesTest, DoneSegmentThatIsStillListedStaysKnown) {
  AddSegmentIfNew("a.ts", kSegmentQueued);
  RecordSegmentDone("a.ts");
  ForgetDoneSegments({"a.ts"});
  EXPECT_EQ(KnownSegments(), 1U);
  ForgetDoneSegments({"b.ts"});
  EXPECT_EQ(KnownSegments(), 0U) << "forgotten once it is no longer listed";
}

TEST_F(SegmentStatesTest, WaitingSegmentIsNotForgotten) {
  AddSegmentIfNew("a.ts", kSegmentQueued);
  ForgetDoneSegments({"b.ts"});
  EXPECT_EQ(KnownSegments(), 1U);
}

TEST_F(SegmentStatesTest, DownloadedSegmentIsLeftToTheRemoval) {
  AddSegmentIfNew("a.ts", kSegmentQueued);
  RecordSegmentDone("a.ts");
  SetSegmentState("a.ts", kSegmentDownloaded);
  ForgetDoneSegments({});
  EXPECT_EQ(KnownSegments(), 1U);
  AddSegmentIfNew("b.ts", kSegmentQueued);
  ForgetDoneSegments({});
  EXPECT_EQ(KnownSegments(), 2U) << "the segment still counts as done";
}

TEST_F(SegmentStatesTest, ForgetAllSegmentsForgetsEverything) {
  AddSegmentIfNew("a.ts", kSegmentQueued);
  AddSegmentIfNew("b.ts", kSegmentDownloaded);
  RecordSegmentDone("a.ts");
  ForgetAllSegments();
  EXPECT_EQ(KnownSegments(), 0U);
  AddSegmentIfNew("a.ts", kSegmentQueued);
  ForgetDoneSegments({});
  EXPECT_EQ(KnownSegments(), 1U) << "the segment still counts as done";
}

TEST_F(SegmentStatesTest, ForgottenSegmentIsNewAgainAndTheOthersStay) {
  AddSegmentIfNew("a.ts?1", kSegmentQueued);
  AddSegmentIfNew("b.ts", kSegmentQueued);
  RecordSegmentDone("a.ts?1");
  testing::internal::CaptureStdout();
  ForgetSegment("a.ts");
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_TRUE(AddSegmentIfNew("a.ts?2", kSegmentQueued));
  EXPECT_FALSE(AddSegmentIfNew("b.ts", kSegmentQueued));
  ForgetDoneSegments({});
  EXPECT_FALSE(AddSegmentIfNew("a.ts", kSegmentQueued)) << "the segment still counts as done";
}

}  // namespace
