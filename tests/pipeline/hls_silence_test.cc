// Servers that accept a request and then send nothing, or hardly anything.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "hls/playlist_thread.h"
#include "hls/segment_download.h"
#include "hls/segment_parse.h"
#include "tests/support/hls_playlists.h"
#include "tests/support/hls_server.h"
#include "tests/support/hls_tasks.h"
#include "tests/support/wait_until.h"

namespace {

using hls_test::LivePlaylist;
using hls_test::MasterPlaylist;
using hls_test::SegmentUris;
using testing::ElementsAre;

constexpr char kList[] = "/list.m3u8";

class HlsSilenceTest : public HlsTasks {
 protected:
  // Long enough for a busy machine to answer at all.
  HlsSilenceTest() { pipeline_.silence_limit = std::chrono::seconds(1); }

  // Runs a task beside the test until `met` holds, then stops it.
  template <typename Task, typename Condition>
  void RunUntil(Task task, Condition met) {
    testing::internal::CaptureStdout();
    std::thread thread(task);
    EXPECT_TRUE(met());
    pipeline_.running = false;
    WakeHlsTasks();
    thread.join();
    testing::internal::GetCapturedStdout();
  }

  void PlaylistUntil(const std::function<bool()>& met) {
    RunUntil([this] { PlaylistThread(pipeline_, server_.Url(kList)); }, met);
  }

  // Refreshes a playlist, one of whose refreshes is answered so, and expects the next one to play.
  void ExpectRefreshAfter(const Reply& trouble) {
    server_.Put(kList, LivePlaylist(0, SegmentUris(0, 2)));
    PlaylistUntil([&] {
      const bool began = server_.WaitForRequests(kList, 1);
      server_.Put(kList, trouble);
      const std::size_t before = server_.CountRequests(kList);
      const bool in_trouble = server_.WaitForRequests(kList, before + 1);
      server_.Put(kList, LivePlaylist(1, SegmentUris(1, 2)));
      return began && in_trouble && WaitUntil([] { return WaitingSegments() == 3; });
    });
    pipeline_.running = true;  // what was queued is taken while it runs
    EXPECT_THAT(Take(), ElementsAre("seg0.ts", "seg1.ts", "seg2.ts"));
    EXPECT_EQ(player_.Snapshot().messages.size(), 1U) << "nothing but the playlist is reported";
  }

  // Plays three segments, the first of which is answered so, and expects the others to follow.
  void ExpectSegmentsAfter(const Reply& trouble) {
    server_.Put("/seg0.ts", trouble);
    server_.Put("/seg1.ts", std::string(kTsPacketSize, '\0'));
    server_.Put("/seg2.ts", std::string(kTsPacketSize, '\0'));
    QueueOrLeave(server_.Url(kList), LivePlaylist(0, SegmentUris(0, 3)));
    std::thread parser([this] { ParseSegmentsThread(pipeline_, kUrl); });
    RunUntil([this] { DownloadPartsThread(pipeline_); },
             [this] {
               return player_.WaitFor(
                   [](const auto& record) { return record.buffered_times.size() == 3; });
             });
    parser.join();
    EXPECT_THAT(player_.Snapshot().buffered_times, ElementsAre(10.0F, 20.0F, 30.0F));
    for (const std::string& name : SegmentUris(0, 3)) {
      EXPECT_LE(server_.CountRequests("/" + name), 1U) << "no segment is tried again";
    }
  }

  HlsServer server_;
};

TEST(HlsSilenceLimitTest, IsTenSeconds) {
  EXPECT_EQ(HlsPipeline().silence_limit, std::chrono::seconds(10));
}

TEST_F(HlsSilenceTest, RefreshThatIsNeverAnsweredIsFollowedByTheNext) {
  ExpectRefreshAfter(Silent());
}

TEST_F(HlsSilenceTest, RefreshThatFallsSilentInItsBodyIsFollowedByTheNext) {
  ExpectRefreshAfter(StalledAfter(5, Whole(LivePlaylist(1, SegmentUris(1, 2)))));
}

TEST_F(HlsSilenceTest, SegmentThatIsNeverAnsweredIsFollowedByTheNext) {
  ExpectSegmentsAfter(Silent());
}

TEST_F(HlsSilenceTest, SegmentThatFallsSilentInItsBodyIsFollowedByTheNext) {
  ExpectSegmentsAfter(StalledAfter(kTsPacketSize, Whole(std::string(1'000, '\0'))));
}

TEST_F(HlsSilenceTest, VariantThatIsNeverAnsweredIsFollowedByTheNext) {
  server_.Put(kList, MasterPlaylist({{500'000, "low.m3u8"}, {900'000, "high.m3u8"}}));
  server_.Put("/low.m3u8", Silent());
  server_.Put("/high.m3u8", LivePlaylist(0, SegmentUris(0, 2)));
  EXPECT_TRUE(Refresh(server_.Url(kList)));
  EXPECT_THAT(Take(), ElementsAre("seg0.ts", "seg1.ts"));
}

TEST_F(HlsSilenceTest, FirstPlaylistThatIsNeverAnsweredIsTriedTwiceAndGivenUp) {
  server_.Put(kList, Silent());
  const std::string url = server_.Url(kList);
  PlaylistUntil([&] {
    return player_.WaitFor([&](const auto& record) { return record.messages.size() == 2; });
  });
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY Try:" + url, "PLAY Failed:" + url));
}

TEST_F(HlsSilenceTest, SegmentThatTricklesForLongerThanTheLimitGoesOn) {
  constexpr std::size_t kTrickles = 3'000;  // with a pause of a millisecond after each
  pipeline_.silence_limit = std::chrono::seconds(1);
  server_.Put("/seg0.ts", Trickling(Whole(std::string("x"))));
  QueueOrLeave(server_.Url(kList), LivePlaylist(0, SegmentUris(0, 2)));
  RunUntil([this] { DownloadPartsThread(pipeline_); },
           [this] { return server_.WaitForTrickles("/seg0.ts", kTrickles); });
  EXPECT_EQ(server_.CountRequests("/seg1.ts"), 0U);
}

TEST_F(HlsSilenceTest, HeadersEndASilenceToo) {
  constexpr int kRedirects = 4;
  pipeline_.silence_limit = std::chrono::seconds(3);
  for (int i = 0; i < kRedirects; ++i) {
    server_.Put("/" + std::to_string(i),
                After(std::chrono::seconds(1), RedirectTo("/" + std::to_string(i + 1))));
  }
  server_.Put("/" + std::to_string(kRedirects), LivePlaylist(0, SegmentUris(0, 1)));
  EXPECT_TRUE(Refresh(server_.Url("/0")));
}

}  // namespace
