#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "hls/playlist_thread.h"
#include "tests/support/hls_playlists.h"
#include "tests/support/hls_server.h"
#include "tests/support/hls_tasks.h"
#include "tests/support/simulated_clock.h"

namespace stream {
namespace {

using hls_test::LivePlaylist;
using hls_test::MasterPlaylist;
using hls_test::OnDemandPlaylist;
using hls_test::SegmentLines;
using hls_test::SegmentUris;
using testing::ElementsAre;
using testing::StartsWith;

constexpr char kIphone[] = "Mozilla/5.0 (iPhone;";
constexpr char kAndroid[] = "Mozilla/5.0 (Linux; U; Android 4.0.3;";

// Runs the work of the playlist thread on the thread of the test: nothing more is reported after it
// returns.
class HlsPlaylistTest : public HlsTasks {
 protected:
  std::string Run(const std::string& url) {
    testing::internal::CaptureStdout();
    PlaylistThread(hls_, url);
    return testing::internal::GetCapturedStdout();
  }
  std::string Run() { return Run(server_.Url(kList)); }

  // Runs it beside `test`, then stops it.
  template <typename Test>
  void RunBeside(const std::string& url, Test test) {
    testing::internal::CaptureStdout();
    std::thread thread([&] { PlaylistThread(hls_, url); });
    test();
    hls_.running = false;
    stream_.WakeTasks();
    thread.join();
    testing::internal::GetCapturedStdout();
  }

  // Runs it, one refresh after another, until `met` holds.
  template <typename Condition>
  void RunUntil(const std::string& url, Condition met) {
    RunBeside(url, [&] { EXPECT_TRUE(clock_.AdvanceUntil(met, 1, kPause)); });
  }

  // The outcome that is reported for a playlist with this body.
  std::vector<std::string> OutcomeOf(const std::string& body) {
    server_.Put(kList, body);
    RunUntil(server_.Url(kList), [this] { return !player_.Snapshot().results.empty(); });
    const auto record = player_.Snapshot();
    std::vector<std::string> lines = record.messages;
    lines.insert(lines.end(), record.results.begin(), record.results.end());
    for (std::string& line : lines) line.resize(line.find(":http") + 1);
    return lines;
  }

  static constexpr std::chrono::seconds kPause{1};

  SimulatedClock clock_;
  HlsServer server_;
};

TEST_F(HlsPlaylistTest, PlaylistThatCannotBeFetchedIsTriedTwice) {
  server_.Put(kList, CutAfter(20, Whole(OnDemandPlaylist(SegmentUris(0, 3)))));
  EXPECT_EQ(Run(), "m3u8 Download thread stop.\n");
  const std::string url = server_.Url(kList);
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY Try:" + url, "PLAY Failed:" + url));
  EXPECT_TRUE(player_.Snapshot().results.empty());
  EXPECT_EQ(server_.Requests().size(), 2U);
}

TEST_F(HlsPlaylistTest, UnreachableServerIsTriedTwice) {
  std::string url;
  {
    const HlsServer gone;
    url = gone.Url(kList);
  }
  EXPECT_EQ(Run(url), "m3u8 Download thread stop.\n");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY Try:" + url, "PLAY Failed:" + url));
}

TEST_F(HlsPlaylistTest, WithoutAPlayerFailuresAreNotReported) {
  hls_.player = PlayerPort();
  server_.Put(kList, CutAfter(5, Whole(std::string("#EXTM3U\n"))));
  EXPECT_EQ(Run(), "m3u8 Download thread stop.\n");
  EXPECT_EQ(server_.Requests().size(), 2U);
}

TEST_F(HlsPlaylistTest, SecondAttemptUsesTheCleanedAddressWithoutAUserAgent) {
  server_.Put("/a\xC1\xA1.m3u8", CutAfter(0, Whole(std::string("x"))));
  server_.Put("/ab.m3u8", OnDemandPlaylist(SegmentUris(0, 2)));
  const std::string url = server_.Url("/a\xC1\xA1.m3u8?x&pt=ios&");
  Run(url);
  const auto requests = server_.Requests();
  ASSERT_EQ(requests.size(), 2U);
  EXPECT_EQ(requests[0].path, "/a\xC1\xA1.m3u8");
  EXPECT_THAT(requests[0].user_agent, StartsWith(kIphone));
  EXPECT_EQ(requests[1].path, "/ab.m3u8") << "C1 and A1 fold into 62";
  EXPECT_FALSE(requests[1].has_user_agent);
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY Try:" + url, "PLAY M3U8 OK:" + url));
}

TEST_F(HlsPlaylistTest, TruncatedBodyOfTheFirstAttemptStaysBeforeTheSecond) {
  server_.Put("/\xC1\xA1.m3u8", CutAfter(5, Whole(std::string("fail\n\n"))));
  server_.Put("/b.m3u8", OnDemandPlaylist(SegmentUris(0, 2)));
  Run(server_.Url("/\xC1\xA1.m3u8"));
  EXPECT_THAT(PopSegments(), ElementsAre("seg0.ts", "seg1.ts"));
}

TEST_F(HlsPlaylistTest, RefreshesRepeatTheRequestThatSucceeded) {
  server_.Put("/\xC1\xA1.m3u8", CutAfter(0, Whole(std::string("x"))));
  server_.Put("/b.m3u8", LivePlaylist(0, SegmentUris(0, 1)));
  RunUntil(server_.Url("/\xC1\xA1.m3u8?x&pt=ios&"),
           [this] { return server_.CountRequests("/b.m3u8") == 2; });
  for (const auto& request : server_.Requests()) {
    EXPECT_EQ(request.has_user_agent, request.path != "/b.m3u8");
  }
}

TEST_F(HlsPlaylistTest, PlaylistVariantAndRefreshSendTheUserAgentOfTheirOwnAddress) {
  server_.Put(kList, MasterPlaylist({{500'000, "low.m3u8?x&pt=android&"}, {900'000, "high.m3u8"}}));
  server_.Put("/low.m3u8", LivePlaylist(0, SegmentUris(0, 1)));
  server_.Put("/high.m3u8", LivePlaylist(0, SegmentUris(0, 1)));
  RunUntil(server_.Url(kList) + "?x&pt=ios&", [this] { return server_.Requests().size() == 6; });
  for (const auto& request : server_.Requests()) {
    const std::string expected = request.path == kList ? kIphone : kAndroid;
    EXPECT_EQ(request.has_user_agent, request.path != "/high.m3u8");
    EXPECT_TRUE(!request.has_user_agent || request.user_agent.starts_with(expected));
  }
}

TEST_F(HlsPlaylistTest, OutcomeIsOkForAPlaylist) {
  EXPECT_THAT(OutcomeOf(LivePlaylist(0, SegmentUris(0, 1))),
              ElementsAre("PLAY M3U8 OK:", "PLAY:M3U8 OK:"));
}

TEST_F(HlsPlaylistTest, OutcomeReportsThatCachingIsForbidden) {
  EXPECT_THAT(OutcomeOf("#EXTM3U\n#EXT-X-ALLOW-CACHE:NO\n"),
              ElementsAre("PLAY M3U8 CACHE_NO OK:", "PLAY:M3U8 CACHE_NO OK:"));
}

TEST_F(HlsPlaylistTest, OutcomeIsNoForAnyOtherBody) {
  EXPECT_THAT(OutcomeOf("<html>gone</html>"), ElementsAre("PLAY M3U8 NO:", "PLAY:M3U8 NO:"));
}

TEST_F(HlsPlaylistTest, OutcomeIsNoForTheCacheLineAlone) {
  EXPECT_THAT(OutcomeOf("#EXT-X-ALLOW-CACHE:NO\n"), ElementsAre("PLAY M3U8 NO:", "PLAY:M3U8 NO:"));
}

TEST_F(HlsPlaylistTest, TagsCountAnywhereInTheBody) {
  EXPECT_THAT(OutcomeOf("not x#EXTM3U here\n y#EXT-X-ALLOW-CACHE:NO"),
              ElementsAre("PLAY M3U8 CACHE_NO OK:", "PLAY:M3U8 CACHE_NO OK:"));
}

TEST_F(HlsPlaylistTest, ErrorPageOfTheServerIsTreatedAsAPlaylistBody) {
  RunUntil(server_.Url("/nowhere.m3u8"), [this] { return !player_.Snapshot().results.empty(); });
  EXPECT_THAT(player_.Snapshot().messages,
              ElementsAre("PLAY M3U8 NO:" + server_.Url("/nowhere.m3u8")));
}

TEST_F(HlsPlaylistTest, BodyThatContainsFailedEndsTheThreadAfterItsOutcome) {
  const std::string url = server_.Url(kList);
  const std::vector<std::pair<std::string, std::string>> bodies = {
      {LivePlaylist(0, {"failed.ts"}), "OK"},
      {OnDemandPlaylist({"failed.ts"}), "OK"},
      {"failed", "NO"}};
  for (const auto& [body, outcome] : bodies) {
    player_.Forget();
    stream_.Clear();
    server_.Put(kList, body);
    EXPECT_EQ(Run(), "[DOWNLOAD]: " + url + "\nm3u8 Download thread stop.\n");
    EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY M3U8 " + outcome + ":" + url));
    EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:M3U8 " + outcome + ":" + url));
    EXPECT_EQ(WaitingSegments(), 0U);
  }
  EXPECT_EQ(server_.Requests().size(), 3U);
}

TEST_F(HlsPlaylistTest, OnDemandPlaylistIsQueuedWholeAndTheThreadEnds) {
  server_.Put(kList, OnDemandPlaylist({"a.ts", "b.aac", "c.ts?x"}));
  EXPECT_EQ(Run(),
            "[DOWNLOAD]: " + server_.Url(kList) + "\nQUEUEED3:3m3u8 Download thread stop.\n");
  EXPECT_EQ(hls_.listedDuration.load(), 30.0F);
  EXPECT_THAT(PopSegments(), ElementsAre("a.ts", "b.aac", "c.ts?x"));
  EXPECT_EQ(PlaylistText(), "");
}

TEST_F(HlsPlaylistTest, OnDemandBodyWithoutAHeaderQueuesNothing) {
  server_.Put(kList, SegmentLines(SegmentUris(0, 2)) + "#EXT-X-ENDLIST\n");
  EXPECT_EQ(Run(), "[DOWNLOAD]: " + server_.Url(kList) + "\nm3u8 Download thread stop.\n");
  EXPECT_EQ(WaitingSegments(), 0U);
  EXPECT_EQ(player_.Snapshot().messages.front().substr(0, 13), "PLAY M3U8 NO:");
}

TEST_F(HlsPlaylistTest, FirstRefreshFollowsTheFirstPlaylistAtOnceAndTheOthersASecondApart) {
  constexpr std::chrono::milliseconds kLittle{1};
  server_.Put(kList, LivePlaylist(0, SegmentUris(0, 1)));
  RunBeside(server_.Url(kList), [&] {
    for (std::size_t refreshes = 1; refreshes <= 4; ++refreshes) {
      EXPECT_TRUE(clock_.WaitForWaiters(1));
      EXPECT_EQ(server_.Requests().size(), 1 + refreshes);
      clock_.Advance(kPause - kLittle);
      EXPECT_EQ(clock_.Waiting(), 1U) << "the pause ended early";
      clock_.Advance(kLittle);
    }
  });
}

TEST_F(HlsPlaylistTest, LivePlaylistIsRefreshedUntilTheStop) {
  server_.Put(kList, LivePlaylist(0, SegmentUris(0, 1)));
  RunUntil(server_.Url(kList), [this] { return server_.Requests().size() == 30; });
  EXPECT_EQ(player_.Snapshot().messages.size(), 1U) << "refreshes are not reported";
}

TEST_F(HlsPlaylistTest, FailedRefreshesAreNotReportedAndRefreshingContinues) {
  server_.Put(kList, LivePlaylist(0, SegmentUris(0, 1)));
  RunUntil(server_.Url(kList), [this] {
    if (clock_.Waiting() == 1) server_.Put(kList, CutAfter(0, Whole(std::string("x"))));
    return server_.Requests().size() == 12;
  });
  EXPECT_EQ(player_.Snapshot().messages.size(), 1U);
}

TEST_F(HlsPlaylistTest, EndedLiveStreamIsStillRefreshedAndItsLastSegmentsPlay) {
  server_.Put(kList, LivePlaylist(0, SegmentUris(0, 2)));
  ASSERT_TRUE(Refresh(server_.Url(kList)));
  PopAndDownload();
  server_.Put(kList, LivePlaylist(1, SegmentUris(1, 2)) + "#EXT-X-ENDLIST\n");
  ASSERT_TRUE(Refresh(server_.Url(kList)));
  EXPECT_THAT(PopAndDownload(), ElementsAre("seg2.ts"));
}

}  // namespace
}  // namespace stream
