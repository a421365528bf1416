// Servers that accept a request and then send nothing, or almost nothing.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <future>
#include <string>
#include <thread>
#include <vector>

#include "hls/playlist_thread.h"
#include "hls/segment_download.h"
#include "hls/segment_parse.h"
#include "tests/support/hls_playlists.h"
#include "tests/support/hls_server.h"
#include "tests/support/hls_tasks.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/wait_until.h"

namespace stream {
namespace {

using hls_test::LivePlaylist;
using hls_test::MasterPlaylist;
using hls_test::SegmentUris;
using testing::ElementsAre;

constexpr std::chrono::seconds kPause{1};
constexpr std::chrono::milliseconds kLimit{10'000};
constexpr std::chrono::milliseconds kLittle{1};

// Runs in simulated time, which stands still until the test advances it. A silent transfer notices
// a change at the next progress call of libcurl.
class HlsSilenceTest : public HlsTasks {
 protected:
  HlsSilenceTest() { clock_.SetRealSleeps(std::chrono::milliseconds(1)); }
  ~HlsSilenceTest() override { clock_.Release(); }

  // Runs a task beside the test until `met` holds, then stops it.
  template <typename Task, typename Condition>
  void RunUntil(Task task, Condition met) {
    testing::internal::CaptureStdout();
    std::thread thread(task);
    EXPECT_TRUE(met());
    hls_.running = false;
    stream_.WakeTasks();
    thread.join();
    testing::internal::GetCapturedStdout();
  }

  void PlaylistUntil(const std::function<bool()>& met) {
    RunUntil([this] { PlaylistThread(hls_, server_.Url(kList)); }, met);
  }

  // Waits until transfers have read the time `count` more times.
  bool WaitForTimeReads(std::size_t count) {
    const std::size_t calls = clock_.NowCalls();
    return WaitUntil([&] { return clock_.NowCalls() >= calls + count; });
  }

  // Waits until the transfer has received the bytes that a stalled reply sends. libcurl reads the
  // time up to twice in each of its turns, so the last of these reads belongs to a turn that began
  // later.
  bool WaitForBytesBeforeTheStall(const std::string& path) {
    return server_.WaitForStall(path) && WaitForTimeReads(4);
  }

  // Refreshes a playlist, answers one refresh with `trouble`, and expects the next one to play.
  // `fall_silent` advances the time until the refresh counts as silent.
  void ExpectRefreshAfter(const Reply& trouble, const std::function<void()>& fall_silent) {
    server_.Put(kList, LivePlaylist(0, SegmentUris(0, 2)));
    PlaylistUntil([&] {
      EXPECT_TRUE(clock_.WaitForWaiters(1));
      server_.Put(kList, trouble);
      clock_.Advance(kPause);
      EXPECT_TRUE(server_.WaitForRequests(kList, 3));
      server_.Put(kList, LivePlaylist(1, SegmentUris(1, 2)));
      fall_silent();
      EXPECT_TRUE(clock_.WaitForWaiters(1));
      clock_.Advance(kPause);
      return WaitUntil([this] { return WaitingSegments() == 3; });
    });
    hls_.running = true;  // queued segments are taken only while it runs
    EXPECT_THAT(PopSegments(), ElementsAre("seg0.ts", "seg1.ts", "seg2.ts"));
    EXPECT_EQ(player_.Snapshot().messages.size(), 1U) << "more than the playlist was reported";
  }

  // Plays three segments, answers the first with `trouble`, and expects the others to follow.
  // `fall_silent` advances the time until the first segment counts as silent.
  void ExpectSegmentsAfter(const Reply& trouble, const std::function<void()>& fall_silent) {
    server_.Put("/seg0.ts", trouble);
    server_.Put("/seg1.ts", std::string(kTsPacketSize, '\0'));
    server_.Put("/seg2.ts", std::string(kTsPacketSize, '\0'));
    QueueOrPutBack(server_.Url(kList), LivePlaylist(0, SegmentUris(0, 3)));
    std::thread parser([this] { ParseSegmentsThread(hls_, kUrl); });
    RunUntil([this] { DownloadPartsThread(hls_); },
             [&] {
               EXPECT_TRUE(server_.WaitForRequests("/seg0.ts", 1));
               fall_silent();
               return player_.WaitFor(
                   [](const auto& record) { return record.buffered_times.size() == 3; });
             });
    parser.join();
    EXPECT_THAT(player_.Snapshot().buffered_times, ElementsAre(10.0F, 20.0F, 30.0F));
    for (const std::string& name : SegmentUris(0, 3)) {
      EXPECT_EQ(server_.CountRequests("/" + name), 1U) << "a segment was requested again";
    }
  }

  SimulatedClock clock_;
  HlsServer server_;
};

TEST(HlsSilenceLimitTest, IsTenSeconds) { EXPECT_EQ(HlsTaskState().silence_limit, kLimit); }

TEST_F(HlsSilenceTest, RefreshThatIsNotAnsweredForTenSecondsIsFollowedByTheNext) {
  ExpectRefreshAfter(Silent(), [this] {
    clock_.Advance(kLimit - kLittle);
    EXPECT_TRUE(WaitForTimeReads(2)) << "the transfer ended early";
    EXPECT_EQ(clock_.Waiting(), 0U) << "the pause began early";
    clock_.Advance(kLittle);
  });
}

TEST_F(HlsSilenceTest, RefreshThatFallsSilentInItsBodyIsFollowedByTheNext) {
  ExpectRefreshAfter(StalledAfter(5, Whole(LivePlaylist(1, SegmentUris(1, 2)))), [this] {
    EXPECT_TRUE(WaitForBytesBeforeTheStall(kList));
    clock_.Advance(kLimit);
  });
}

TEST_F(HlsSilenceTest, SegmentThatIsNeverAnsweredIsFollowedByTheNext) {
  ExpectSegmentsAfter(Silent(), [this] { clock_.Advance(kLimit); });
}

TEST_F(HlsSilenceTest, SegmentThatFallsSilentInItsBodyIsFollowedByTheNext) {
  ExpectSegmentsAfter(StalledAfter(kTsPacketSize, Whole(std::string(1'000, '\0'))), [this] {
    EXPECT_TRUE(WaitForBytesBeforeTheStall("/seg0.ts"));
    clock_.Advance(kLimit);
  });
}

TEST_F(HlsSilenceTest, VariantThatIsNeverAnsweredIsFollowedByTheNext) {
  server_.Put(kList, MasterPlaylist({{500'000, "low.m3u8"}, {900'000, "high.m3u8"}}));
  server_.Put("/low.m3u8", Silent());
  server_.Put("/high.m3u8", LivePlaylist(0, SegmentUris(0, 2)));
  auto refreshed = std::async(std::launch::async, [this] { return Refresh(server_.Url(kList)); });
  EXPECT_TRUE(server_.WaitForRequests("/low.m3u8", 1));
  clock_.Advance(kLimit);
  EXPECT_TRUE(refreshed.get());
  EXPECT_THAT(PopSegments(), ElementsAre("seg0.ts", "seg1.ts"));
}

TEST_F(HlsSilenceTest, FirstPlaylistThatIsNeverAnsweredIsTriedTwice) {
  server_.Put(kList, Silent());
  const std::string url = server_.Url(kList);
  PlaylistUntil([&] {
    for (const std::size_t attempt : {1U, 2U}) {
      EXPECT_TRUE(server_.WaitForRequests(attempt));
      clock_.Advance(kLimit);
    }
    return player_.WaitFor([&](const auto& record) { return record.messages.size() == 2; });
  });
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY Try:" + url, "PLAY Failed:" + url));
  EXPECT_EQ(server_.Requests().size(), 2U);
}

// A read of the time may belong to a turn of libcurl that began before the last bytes were
// received, so each pause is much shorter than the limit.
TEST_F(HlsSilenceTest, SegmentThatTricklesForLongerThanTheLimitContinues) {
  static constexpr std::chrono::milliseconds kPauseAfterEach = kLimit / 4;
  constexpr std::size_t kTrickles = 40;
  server_.Put("/seg0.ts", Trickling(Whole(std::string("x")), kPauseAfterEach));
  QueueOrPutBack(server_.Url(kList), LivePlaylist(0, SegmentUris(0, 2)));
  RunUntil([this] { DownloadPartsThread(hls_); },
           [this] {
             std::size_t calls = 0;
             for (std::size_t i = 1; i <= kTrickles; ++i) {
               const bool goes_on = server_.WaitForTrickles("/seg0.ts", i) &&
                                    clock_.WaitForWaiters(1) &&
                                    WaitUntil([&] { return clock_.NowCalls() > calls; });
               if (!goes_on) return false;
               calls = clock_.NowCalls();
               clock_.Advance(kPauseAfterEach);
             }
             return true;
           });
  EXPECT_EQ(server_.CountRequests("/seg0.ts"), 1U);
  EXPECT_EQ(server_.CountRequests("/seg1.ts"), 0U);
}

TEST_F(HlsSilenceTest, HeadersEndASilenceToo) {
  constexpr std::chrono::milliseconds kLongerThanHalf = kLimit / 2 + kLittle;
  server_.Put("/0", BlockedUntilRelease(RedirectTo("/1")));
  server_.Put("/1", BlockedUntilRelease(Whole(LivePlaylist(0, SegmentUris(0, 1)))));
  auto refreshed = std::async(std::launch::async, [this] { return Refresh(server_.Url("/0")); });
  for (const char* path : {"/0", "/1"}) {
    EXPECT_TRUE(server_.WaitForRequests(path, 1));
    clock_.Advance(kLongerThanHalf);
    EXPECT_TRUE(WaitForTimeReads(1));
    server_.Release(path);
  }
  EXPECT_TRUE(refreshed.get());
}

}  // namespace
}  // namespace stream
