#include "hls/segment_ledger.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace stream {
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

class SegmentLedgerTest : public testing::Test {
 protected:
  // The console output of RemoveStaleSegments.
  std::string Remove(const SegmentKeys& current, std::int32_t state) {
    testing::internal::CaptureStdout();
    ledger_.RemoveStaleSegments(current, state);
    return testing::internal::GetCapturedStdout();
  }

  // Whether the segment is known. Adds it if not.
  bool IsKnown(const std::string& uri) { return !ledger_.AddSegmentIfNew(uri, kSegmentQueued); }

  // A playlist that lists these names from a media sequence number on.
  static M3u8Table Listed(std::int64_t first, const std::vector<std::string>& names) {
    M3u8Table entries;
    for (const std::string& name : names) {
      M3u8Entry entry{name};
      entry.number = first + static_cast<std::int64_t>(entries.size());
      entries.emplace(static_cast<std::int32_t>(entries.size()), entry);
    }
    return entries;
  }

  WindowVerdict Follow(std::int64_t first, const std::vector<std::string>& names) {
    return ledger_.FollowWindow(kSource, first, Listed(first, names));
  }

  // The segment as it is queued when the current window lists it.
  QueuedSegment Identified(const std::string& name) {
    return ledger_.Identify(M3u8Entry{name}, kSource);
  }

  // Records that the playlist lists this many segments, and one variant.
  void List(int segments) {
    std::vector<std::string> names;
    for (int i = 0; i < segments; ++i) names.push_back(std::to_string(i));
    ledger_.RecordListed({names.begin(), names.end()}, {"variant"});
  }

  std::size_t Known() { return ledger_.CurrentSizes().known; }

  static constexpr char kSource[] = "http://h/list.m3u8";

  SegmentLedger ledger_;
  SegmentHistory history_;
};

TEST_F(SegmentLedgerTest, SegmentIsAddedOnceWhateverItsQuery) {
  EXPECT_TRUE(ledger_.AddSegmentIfNew("a.ts?1", kSegmentQueued));
  EXPECT_FALSE(ledger_.AddSegmentIfNew("a.ts?2", kSegmentQueued));
  EXPECT_FALSE(ledger_.AddSegmentIfNew("a.ts", kSegmentDownloaded));
  EXPECT_EQ(Known(), 1U);
}

TEST_F(SegmentLedgerTest, SecondAddDoesNotChangeTheState) {
  ledger_.AddSegmentIfNew("a.ts", kSegmentQueued);
  ledger_.AddSegmentIfNew("a.ts", kSegmentDownloaded);
  EXPECT_EQ(Remove({}, kSegmentDownloaded), "");
}

TEST_F(SegmentLedgerTest, StateIsSetWhateverTheQuery) {
  ledger_.AddSegmentIfNew("a.ts?1", kSegmentQueued);
  ledger_.SetSegmentState("a.ts?other", kSegmentDownloaded);
  EXPECT_EQ(Remove({}, kSegmentDownloaded), "[REMOVE]: a.ts\n");
}

TEST_F(SegmentLedgerTest, StateOfAnUnknownSegmentIsNotSet) {
  ledger_.SetSegmentState("a.ts", kSegmentDownloaded);
  EXPECT_EQ(Known(), 0U);
}

TEST_F(SegmentLedgerTest, RemovalKeepsListedSegmentsAndThoseInAnotherState) {
  ledger_.AddSegmentIfNew("c.ts", kSegmentDownloaded);
  ledger_.AddSegmentIfNew("b.ts", kSegmentQueued);
  ledger_.AddSegmentIfNew("a.ts?q", kSegmentDownloaded);
  ledger_.AddSegmentIfNew("d.ts", kSegmentDownloaded);
  EXPECT_EQ(Remove({SegmentKeyIn("d.ts?now")}, kSegmentDownloaded),
            "[REMOVE]: a.ts\n[REMOVE]: c.ts\n");
  EXPECT_TRUE(IsKnown("b.ts") && IsKnown("d.ts"));
  EXPECT_FALSE(IsKnown("a.ts") || IsKnown("c.ts"));
}

TEST_F(SegmentLedgerTest, RemovalOfQueuedSegmentsKeepsDownloadedOnes) {
  ledger_.AddSegmentIfNew("a.ts", kSegmentQueued);
  ledger_.AddSegmentIfNew("b.ts", kSegmentDownloaded);
  EXPECT_EQ(Remove({}, kSegmentQueued), "[REMOVE]: a.ts\n");
  EXPECT_EQ(Known(), 1U);
}

TEST_F(SegmentLedgerTest, DoneSegmentThatIsNotListedIsForgottenWithoutALine) {
  ledger_.AddSegmentIfNew("a.ts", kSegmentQueued);
  ledger_.RecordNotDownloaded("a.ts?query");
  testing::internal::CaptureStdout();
  ledger_.RecordListed({"b.ts"});
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(Known(), 0U);
}

TEST_F(SegmentLedgerTest, DoneSegmentThatIsStillListedStaysKnown) {
  ledger_.AddSegmentIfNew("a.ts", kSegmentQueued);
  ledger_.RecordNotDownloaded("a.ts");
  ledger_.RecordListed({"a.ts"});
  EXPECT_EQ(Known(), 1U);
  ledger_.RecordListed({"b.ts"});
  EXPECT_EQ(Known(), 0U) << "forgotten once it is no longer listed";
}

TEST_F(SegmentLedgerTest, WaitingSegmentIsNotForgotten) {
  ledger_.AddSegmentIfNew("a.ts", kSegmentQueued);
  ledger_.RecordListed({"b.ts"});
  EXPECT_EQ(Known(), 1U);
}

TEST_F(SegmentLedgerTest, DownloadedSegmentIsLeftToTheRemoval) {
  ledger_.AddSegmentIfNew("a.ts", kSegmentQueued);
  ledger_.RecordNotDownloaded("a.ts");
  ledger_.SetSegmentState("a.ts", kSegmentDownloaded);
  ledger_.RecordListed({}, {});
  EXPECT_EQ(Known(), 1U);
  ledger_.AddSegmentIfNew("b.ts", kSegmentQueued);
  ledger_.RecordListed({}, {});
  EXPECT_EQ(Known(), 2U) << "the segment still counts as done";
}

TEST_F(SegmentLedgerTest, ClearForgetsEverything) {
  Follow(0, {"a.ts", "b.ts", "c.ts"});
  Follow(1, {"b.ts", "c.ts", "a.ts"});
  EXPECT_EQ(ledger_.CurrentSizes().replaced, 1U);
  List(1'500);
  ledger_.AddSegmentIfNew("a.ts", kSegmentQueued);
  ledger_.AddSegmentIfNew("b.ts", kSegmentDownloaded);
  ledger_.RecordNotDownloaded("a.ts");
  ledger_.Clear();
  EXPECT_EQ(Known(), 0U);
  EXPECT_EQ(ledger_.CurrentSizes().replaced, 0U);
  ledger_.BeginBatch(history_, {});
  EXPECT_EQ(history_.limit, 1'000U) << "the number of listed segments";
  ledger_.AddSegmentIfNew("a.ts", kSegmentQueued);
  ledger_.RecordListed({}, {});
  EXPECT_EQ(Known(), 1U) << "the segment still counts as done";
}

TEST_F(SegmentLedgerTest, SegmentWhoseNameIsReusedIsNewAgainAndTheOthersStay) {
  Follow(0, {"a.ts", "b.ts", "c.ts"});
  ledger_.AddSegmentIfNew("a.ts?1", kSegmentQueued);
  ledger_.AddSegmentIfNew("b.ts", kSegmentQueued);
  ledger_.RecordNotDownloaded("a.ts?1");
  testing::internal::CaptureStdout();
  EXPECT_EQ(Follow(1, {"b.ts", "c.ts", "a.ts"}), WindowVerdict::kGoesOn);  // a new segment "a.ts"
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_TRUE(ledger_.AddSegmentIfNew("a.ts?2", kSegmentQueued));
  EXPECT_FALSE(ledger_.AddSegmentIfNew("b.ts", kSegmentQueued));
  ledger_.RecordListed({}, {});
  EXPECT_FALSE(ledger_.AddSegmentIfNew("a.ts", kSegmentQueued))
      << "the segment still counts as done";
}

TEST_F(SegmentLedgerTest, RestartMakesEverySegmentNewAndTakenAgain) {
  Follow(100, {"a.ts", "b.ts"});
  EXPECT_FALSE(IsKnown("a.ts"));
  EXPECT_TRUE(ledger_.TakeIfNew(history_, Identified("a.ts")));
  EXPECT_EQ(Follow(0, {"a.ts", "b.ts"}), WindowVerdict::kRestart);
  EXPECT_FALSE(IsKnown("a.ts"));
  EXPECT_TRUE(ledger_.TakeIfNew(history_, Identified("a.ts")));
  EXPECT_FALSE(ledger_.TakeIfNew(history_, Identified("a.ts"))) << "once a restart";
}

TEST_F(SegmentLedgerTest, LateCopyChangesNothing) {
  Follow(100, {"a.ts", "b.ts"});
  Follow(101, {"b.ts", "c.ts"});
  EXPECT_FALSE(IsKnown("b.ts"));
  EXPECT_EQ(Follow(100, {"a.ts", "b.ts"}), WindowVerdict::kLateCopy);
  EXPECT_TRUE(IsKnown("b.ts"));
}

TEST_F(SegmentLedgerTest, SegmentsOfAReusedNameHaveDifferentIdentities) {
  Follow(0, {"a.ts", "b.ts", "c.ts"});
  const QueuedSegment former = Identified("a.ts?token");
  Follow(1, {"b.ts", "c.ts", "a.ts"});
  EXPECT_EQ(former.identity, "a.ts");
  EXPECT_NE(Identified("a.ts").identity, former.identity);
  EXPECT_EQ(Identified("b.ts").identity, "b.ts");
  EXPECT_EQ(ledger_.Identify(M3u8Entry{"a.ts"}, "").identity, "a.ts") << "without a window";
}

TEST_F(SegmentLedgerTest, ReplacedSegmentIsRememberedAsLongAsItWaits) {
  Follow(0, {"a.ts", "b.ts", "c.ts"});
  const QueuedSegment former = Identified("a.ts");
  EXPECT_FALSE(ledger_.IsReplaced(former));
  Follow(1, {"b.ts", "c.ts", "a.ts"});
  EXPECT_TRUE(ledger_.IsReplaced(former));
  EXPECT_FALSE(ledger_.IsReplaced(Identified("a.ts")));
  ledger_.BeginBatch(history_, {former});
  EXPECT_TRUE(ledger_.IsReplaced(former));
  ledger_.BeginBatch(history_, {});
  EXPECT_FALSE(ledger_.IsReplaced(former));
  EXPECT_EQ(ledger_.CurrentSizes().replaced, 0U);
}

TEST_F(SegmentLedgerTest, SegmentTakenBeforeIsDone) {
  Follow(0, {"a.ts"});
  ledger_.AddSegmentIfNew("a.ts", kSegmentQueued);
  EXPECT_TRUE(ledger_.TakeIfNew(history_, Identified("a.ts")));
  ledger_.RecordListed({"b.ts"});
  EXPECT_EQ(Known(), 1U) << "it may still be downloaded";
  EXPECT_FALSE(ledger_.TakeIfNew(history_, Identified("a.ts")));
  ledger_.RecordListed({"b.ts"});
  EXPECT_EQ(Known(), 0U);
}

TEST_F(SegmentLedgerTest, SegmentThreadRemembersAsManySegmentsAsAreListed) {
  ledger_.BeginBatch(history_, {});
  EXPECT_EQ(history_.limit, 1'000U);
  List(1'500);
  ledger_.BeginBatch(history_, {});
  EXPECT_EQ(history_.limit, 1'501U);
}

TEST_F(SegmentLedgerTest, ClearForgetsTheNumbersAndKeepsTheEpoch) {
  Follow(100, {"a.ts", "b.ts"});
  EXPECT_EQ(Follow(0, {"a.ts", "b.ts"}), WindowVerdict::kRestart);
  EXPECT_TRUE(ledger_.TakeIfNew(history_, Identified("a.ts")));
  ledger_.Clear();
  EXPECT_EQ(ledger_.CurrentSizes().playlists, 0U);
  EXPECT_EQ(Follow(0, {"a.ts", "b.ts"}), WindowVerdict::kGoesOn);
  EXPECT_FALSE(ledger_.TakeIfNew(history_, Identified("a.ts")))
      << "a segment thread that still runs plays no segment again";
}

}  // namespace
}  // namespace stream
