#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/hls_play.h"
#include "tests/support/hls_tasks.h"
#include "tests/support/known_segments.h"
#include "tests/support/wait_until.h"

namespace stream {
namespace {

using hls_test::LivePlaylist;
using hls_test::MasterPlaylist;
using hls_test::SegmentLines;
using hls_test::SegmentUris;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using ts_test::MakeStream;

constexpr char kMaster[] = "/live/master.m3u8";

// Passes through a master playlist, one by one and without the pauses between them.
class HlsVariantTest : public HlsTasks {
 protected:
  // Lists the slowest variant last, so that the order does not select it.
  HlsVariantTest() {
    server_.Put(kMaster, MasterPlaylist({{1'000'000, "high.m3u8"}, {500'000, "low.m3u8"}}));
  }

  void PutLow(const std::string& text) { server_.Put("/live/low.m3u8", text); }
  void PutHigh(const std::string& text) { server_.Put("/live/high.m3u8", text); }

  bool Pass() { return Refresh(server_.Url(kMaster)); }

  // Returns the console output of one pass, without the request for the master playlist.
  std::string Console() {
    testing::internal::CaptureStdout();
    const auto text = FetchPlaylist(hls_, {server_.Url(kMaster), true});
    testing::internal::GetCapturedStdout();
    testing::internal::CaptureStdout();
    EXPECT_TRUE(text && QueueSegmentsFromPlaylist(hls_, server_.Url(kMaster), *text));
    return testing::internal::GetCapturedStdout();
  }

  HlsServer server_;
};

TEST_F(HlsVariantTest, SegmentsOfTheSlowestVariantAreQueuedAndTheOthersIgnored) {
  PutLow(LivePlaylist(0, SegmentUris(0, 3, "low")));
  PutHigh(LivePlaylist(0, SegmentUris(0, 3, "high")));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopSegments(), ElementsAre("low0.ts", "low1.ts", "low2.ts"));
  std::vector<std::string> paths;
  for (const auto& request : server_.Requests()) paths.push_back(request.path);
  EXPECT_THAT(paths, ElementsAre(kMaster, "/live/low.m3u8", "/live/high.m3u8"));
}

TEST_F(HlsVariantTest, FasterVariantAddsItsSegmentsAfterTheEndOfTheSlower) {
  PutLow(LivePlaylist(0, SegmentUris(0, 2, "low")));
  PutHigh(LivePlaylist(0, SegmentUris(0, 4, "high")));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopSegments(), ElementsAre("low0.ts", "low1.ts", "high2.ts", "high3.ts"));
}

TEST_F(HlsVariantTest, ConsoleCountsAndNamesTheQueuedSegments) {
  PutLow(LivePlaylist(0, {"low0.ts?x", "low1.aac"}));
  PutHigh(LivePlaylist(0, SegmentUris(0, 3, "high")));
  const std::string low = "[DOWNLOAD]: " + server_.Url("/live/low.m3u8") + "\n";
  const std::string high = "[DOWNLOAD]: " + server_.Url("/live/high.m3u8") + "\n";
  EXPECT_EQ(Console(), "QUEUEED1:2" + low +
                           "QUEUEED2:2[QUEUEED]: " + server_.Url("/live/low0.ts?x") + "\n" + high +
                           "QUEUEED2:3[QUEUEED]: " + server_.Url("/live/high2.ts") + "\n");
  EXPECT_EQ(Console(), "QUEUEED1:2" + low + "QUEUEED2:2" + high + "QUEUEED2:3");
}

TEST_F(HlsVariantTest, DownloadedSegmentsAreForgottenOnceNoVariantListsThem) {
  PutLow(LivePlaylist(0, SegmentUris(0, 2, "low")));
  EXPECT_TRUE(Pass());
  PopAndDownload();
  PutLow(LivePlaylist(1, SegmentUris(1, 2, "low")));
  const std::string console = Console();
  EXPECT_THAT(console, HasSubstr("QUEUEED2:2[QUEUEED]: " + server_.Url("/live/low2.ts") + "\n"));
  EXPECT_THAT(console, testing::EndsWith("[REMOVE]: " + server_.Url("/live/low0.ts") + "\n"));
  EXPECT_THAT(PopAndDownload(), ElementsAre("low2.ts"));
}

TEST_F(HlsVariantTest, AddressesAreResolvedAgainstTheTopLevelPlaylist) {
  server_.Put(kMaster, MasterPlaylist({{500'000, "/elsewhere/low.m3u8"}}));
  server_.Put("/elsewhere/low.m3u8", LivePlaylist(0, {"a.ts"}));
  EXPECT_TRUE(Pass());
  PopSegments();
  ASSERT_EQ(popped_.size(), 1U);
  EXPECT_EQ(popped_[0].uri, server_.Url("/live/a.ts"));
}

TEST_F(HlsVariantTest, VariantWithoutAHeaderAddsNothing) {
  PutLow("#EXT-X-VERSION:3\n" + SegmentLines({"low0.ts"}));
  server_.Put(kMaster, MasterPlaylist({{500'000, "low.m3u8"}}));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopSegments(), IsEmpty());
  EXPECT_THAT(VariantText(), HasSubstr("low0.ts"))
      << "the text is kept, and the next one is appended";
}

TEST_F(HlsVariantTest, MissingVariantLeavesTheOthers) {
  PutHigh(LivePlaylist(0, SegmentUris(0, 2, "high")));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopSegments(), ElementsAre("high0.ts", "high1.ts"));
}

TEST_F(HlsVariantTest, TruncatedVariantLeavesTheOthersAndItsTextStaysBeforeTheirs) {
  const std::string low = LivePlaylist(0, SegmentUris(0, 2, "low"));
  server_.Put("/live/low.m3u8", CutAfter(low.size() - 19, Whole(low)));
  PutHigh(LivePlaylist(0, SegmentUris(0, 2, "high")));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopSegments(), ElementsAre("low0.ts", "high0.ts", "high1.ts"));
}

TEST_F(HlsVariantTest, VariantThatIsMissingForAWhileContinuesWhereItWas) {
  PutLow(LivePlaylist(0, SegmentUris(0, 3)));
  PutHigh("");
  EXPECT_TRUE(Pass());
  EXPECT_EQ(PopAndDownload().size(), 3U);
  for (const char* body : {"", "<html>busy</html>", "#EXTM3U\n"}) {
    PutLow(body);
    EXPECT_TRUE(Pass());
    EXPECT_THAT(PopAndDownload(), IsEmpty());
  }
  PutLow(LivePlaylist(1, SegmentUris(1, 3)));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg3.ts"));
}

TEST_F(HlsVariantTest, RestartWithTheSameNamesPlaysAtOnce) {
  PutLow(LivePlaylist(100, SegmentUris(0, 3)));
  EXPECT_TRUE(Pass());
  PopAndDownload();
  PutLow(LivePlaylist(0, SegmentUris(0, 3)));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg0.ts", "seg1.ts", "seg2.ts"));
  PutLow(LivePlaylist(1, SegmentUris(1, 3)));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg3.ts"));
}

TEST_F(HlsVariantTest, LateCopyIsCountedAndOtherwiseSkipped) {
  server_.Put(kMaster, MasterPlaylist({{500'000, "low.m3u8"}}));
  for (const int first : {100, 101}) {
    PutLow(LivePlaylist(first, SegmentUris(first, 3)));
    EXPECT_TRUE(Pass());
    PopAndDownload();
  }
  PutLow(LivePlaylist(100, SegmentUris(100, 3)));
  EXPECT_THAT(Console(), testing::EndsWith("QUEUEED2:3"));
  EXPECT_EQ(WaitingSegments(), 0U);
}

TEST_F(HlsVariantTest, VariantWithReusedNamesContinuesAfterAnotherReplacedIt) {
  const auto list = [](const std::string& prefix, int first) {
    std::vector<std::string> names;
    for (int i = first; i < first + 5; ++i) names.push_back(prefix + std::to_string(i % 8) + ".ts");
    return LivePlaylist(first, names);
  };
  std::vector<std::string> played;
  for (int first = 0; first < 40; ++first) {
    PutLow(first % 10 == 9 ? "" : list("low", first));
    PutHigh(list("high", first));
    EXPECT_TRUE(Pass());
    for (const std::string& name : PopAndDownload()) {
      if (name.starts_with("low")) played.push_back(name);
    }
  }
  std::vector<std::string> expected;
  for (int i = 0; i < 43; ++i) expected.push_back("low" + std::to_string(i % 8) + ".ts");
  EXPECT_EQ(played, expected);
}

TEST_F(HlsVariantTest, RestartOfOneVariantRestartsAll) {
  PutLow(LivePlaylist(100, SegmentUris(0, 3, "low")));
  EXPECT_TRUE(Pass());
  PutLow("");
  PutHigh(LivePlaylist(100, SegmentUris(0, 3, "high")));
  EXPECT_TRUE(Pass());
  PutLow(LivePlaylist(0, SegmentUris(0, 3, "low")));
  EXPECT_TRUE(Pass());
  EXPECT_EQ(PopAndDownload().size(), 9U);
  PutLow("");
  PutHigh(LivePlaylist(0, SegmentUris(0, 3, "high")));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopAndDownload(), ElementsAre("high0.ts", "high1.ts", "high2.ts"));
  PutLow(LivePlaylist(1, SegmentUris(1, 3, "low")));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopAndDownload(), ElementsAre("low3.ts"));
}

TEST_F(HlsVariantTest, VariantWithAChangingTokenIsTheSameVariant) {
  for (int first = 0; first < 40; ++first) {
    server_.Put(kMaster, MasterPlaylist({{500'000, "low.m3u8?token=" + std::to_string(first)}}));
    PutLow(LivePlaylist(first, {"r" + std::to_string(first % 3) + ".ts",
                                "r" + std::to_string((first + 1) % 3) + ".ts"}));
    EXPECT_TRUE(Pass());
    EXPECT_EQ(PopAndDownload().size(), first == 0 ? 2U : 1U);
  }
}

TEST_F(HlsVariantTest, StopWhileQueueingAVariantSkipsTheRest) {
  constexpr int kMany = 100'000;
  server_.Put(kMaster, MasterPlaylist({{500'000, "low.m3u8"}}));
  PutLow(LivePlaylist(0, SegmentUris(0, kMany)));
  testing::internal::CaptureStdout();
  std::thread stopper([this] {
    EXPECT_TRUE(WaitUntil([] { return KnownSegments() > 0; }));
    hls_.running = false;
  });
  const auto text = FetchPlaylist(hls_, {server_.Url(kMaster), true});
  EXPECT_TRUE(text && QueueSegmentsFromPlaylist(hls_, server_.Url(kMaster), *text));
  stopper.join();
  testing::internal::GetCapturedStdout();
  EXPECT_LT(KnownSegments(), std::size_t{kMany});
  EXPECT_EQ(WaitingSegments(), 0U);
}

TEST_F(HlsVariantTest, DownloadedTopLevelSegmentIsForgottenBesideAVariant) {
  server_.Put(kMaster, MasterPlaylist({{500'000, "low.m3u8"}}) + SegmentLines({"top.ts"}));
  PutLow(LivePlaylist(0, {"low0.ts"}));
  EXPECT_TRUE(Pass());
  EXPECT_THAT(PopAndDownload(), ElementsAre("top.ts", "low0.ts"));
  PutLow(LivePlaylist(0, {"low0.ts", "low1.ts"}));
  EXPECT_THAT(Console(), testing::EndsWith("[REMOVE]: " + server_.Url("/live/top.ts") + "\n"));
  EXPECT_EQ(KnownSegments(), 2U);
}

TEST_F(HlsVariantTest, SequencesOfTwoVariantsAreNotComparedWithEachOther) {
  for (int i = 0; i < 3; ++i) {
    PutLow(LivePlaylist(1'000 + i, SegmentUris(i, 3)));
    PutHigh(LivePlaylist(i, SegmentUris(i, 3, "high")));
    EXPECT_TRUE(Pass());
    PopAndDownload();
  }
  ASSERT_EQ(popped_.size(), 5U);
  EXPECT_EQ(popped_.back().uri, server_.Url("/live/seg4.ts"));
}

TEST_F(HlsVariantTest, SegmentsDoNotPileUpOverHundredsOfRefreshes) {
  std::size_t most_known = 0;
  std::size_t played = 0;
  for (int i = 0; i < 300; ++i) {
    PutLow(LivePlaylist(i, SegmentUris(i, 6)));
    EXPECT_TRUE(Pass());
    const std::size_t before = popped_.size();
    played += PopSegments().size();
    for (std::size_t at = before; at < popped_.size(); ++at) {
      const std::string& uri = popped_[at].uri;
      at % 3 == 0 ? stream_.ledger.RecordNotDownloaded(uri)
                  : stream_.ledger.SetSegmentState(uri, kSegmentDownloaded);
    }
    most_known = std::max(most_known, KnownSegments());
  }
  EXPECT_EQ(played, 305U);
  EXPECT_LE(most_known, 14U);
}

TEST_F(HlsVariantTest, VariantWithoutATransferHandleIsSkipped) {
  hls_.variantHandle.reset();
  EXPECT_TRUE(Pass());
  EXPECT_EQ(server_.Requests().size(), 1U);
}

class HlsMasterTest : public HlsPlay {};

TEST_F(HlsMasterTest, SlowestVariantPlays) {
  const ts_test::Bytes stream = MakeStream(30);
  PutSegments(stream, SegmentUris(0, 3, "low"));
  server_.Put(kList, MasterPlaylist({{1'000'000, "high.m3u8"}, {500'000, "low.m3u8"}}));
  server_.Put("/low.m3u8", LivePlaylist(0, SegmentUris(0, 3, "low")));
  server_.Put("/high.m3u8", LivePlaylist(0, SegmentUris(0, 3, "high")));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(29) && WaitForAudio(29));
  EXPECT_TRUE(server_.WaitForRequests(kList, 2));
  Stop();
  EXPECT_EQ(Dump(player_.Snapshot()), Dump(FramesOf(stream)));
  EXPECT_THAT(CountRequests(SegmentUris(0, 3, "low")), Each(1U));
  EXPECT_THAT(CountRequests(SegmentUris(0, 3, "high")), Each(0U));
}

}  // namespace
}  // namespace stream
