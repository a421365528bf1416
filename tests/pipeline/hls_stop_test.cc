#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <string>
#include <thread>

#include "hls/hls_stream.h"
#include "tests/support/hls_play.h"
#include "tests/support/known_segments.h"
#include "tests/support/stop_sleep_recorder.h"
#include "tests/support/wait_until.h"
#include "ts/ts_demux.h"

namespace stream {
namespace {

using hls_test::LivePlaylist;
using hls_test::MasterPlaylist;
using hls_test::OnDemandPlaylist;
using hls_test::SegmentUris;
using ts_test::MakeStream;

// tests/conformance tests what every pipeline does at a stop; this file tests the states that only
// HLS can be in. A pause between refreshes ends by the stop, or at once where a test needs the next
// refresh, but never by its time limit.
class HlsStopTest : protected RecordedStops, public HlsPlay {
 protected:
  HlsStopTest() : RecordedStops([] { return g_hlsStream->ActiveRuns(); }) {
    PutOnDemand(MakeStream(60), 3);
  }

  // Stops, expects the stop to be prompt, and checks that nothing of the stream is left.
  void StopAndExpectNothingLeft() {
    StopAndExpectNothingLeftWithoutSleeps();
    EXPECT_TRUE(sleep_recorder_.WasPrompt(std::chrono::milliseconds(1)));
  }

  // The same without a check of the sleeps after the stop, some of which belong to a server that
  // trickles.
  void StopAndExpectNothingLeftWithoutSleeps() {
    EXPECT_TRUE(Stop());
    EXPECT_EQ(player_.Snapshot().messages.back(), "PLAY STOP OK");
    EXPECT_FALSE(g_hlsStream->ActiveRuns());
    EXPECT_EQ(KnownSegments(), 0U);
    EXPECT_EQ(stream_.g_parseLength.load(), 0);
    {
      const std::lock_guard lock(stream_.playlist_mutex);
      EXPECT_EQ(stream_.g_playlistText + stream_.g_variantText, "");
    }
    {
      const std::lock_guard lock(stream_.download_mutex);
      EXPECT_EQ(stream_.g_downloadLength, 0);
    }
    {
      const std::lock_guard lock(stream_.g_segmentQueueMutex);
      EXPECT_TRUE(stream_.g_segmentQueue.empty());
    }
    const std::lock_guard lock(g_frameQueueMutex);
    EXPECT_EQ(g_videoQueue, nullptr);
    EXPECT_EQ(g_audioQueue, nullptr);
  }
};

TEST_F(HlsStopTest, WhileThePlaylistStalls) {
  server_.Put(kList, StalledAfter(30, Whole(OnDemandPlaylist(SegmentUris(0, 3)))));
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(server_.WaitForRequests(1));
  StopAndExpectNothingLeft();
}

TEST_F(HlsStopTest, WhileARefreshIsSilent) {
  server_.Put(kList, LivePlaylist(0, SegmentUris(0, 3)));
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(server_.WaitForRequests(kList, 2));
  server_.Put(kList, Silent());
  sleep_recorder_.EndWaitsImmediately(true);
  stream_.WakeTasks();
  ASSERT_TRUE(server_.WaitForRequests(kList, 3));
  StopAndExpectNothingLeft();
}

TEST_F(HlsStopTest, WhileAVariantIsSilent) {
  server_.Put(kList, MasterPlaylist({{500'000, "low.m3u8"}, {900'000, "high.m3u8"}}));
  server_.Put("/low.m3u8", Silent());
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(server_.WaitForRequests("/low.m3u8", 1));
  StopAndExpectNothingLeft();
  EXPECT_EQ(server_.CountRequests("/high.m3u8"), 0U);
}

TEST_F(HlsStopTest, WhileAVariantStalls) {
  server_.Put(kList, MasterPlaylist({{500'000, "low.m3u8"}}));
  server_.Put("/low.m3u8", StalledAfter(30, Whole(LivePlaylist(0, SegmentUris(0, 3)))));
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(server_.WaitForRequests("/low.m3u8", 1));
  StopAndExpectNothingLeft();
}

TEST_F(HlsStopTest, WhileASegmentIsSilent) {
  server_.Put("/seg1.ts", Silent());
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(server_.WaitForRequests("/seg1.ts", 1));
  StopAndExpectNothingLeft();
  EXPECT_EQ(server_.CountRequests("/seg2.ts"), 0U);
}

TEST_F(HlsStopTest, WhileASegmentStalls) {
  server_.Put("/seg1.ts", StalledAfter(1'000, Whole(MakeStream(60))));
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(server_.WaitForRequests("/seg1.ts", 1) && WaitForVideo(5));
  StopAndExpectNothingLeft();
}

TEST_F(HlsStopTest, WhileAnEndlessSegmentIsReceived) {
  server_.Put("/seg1.ts", Trickling(Whole(std::string(kTsPacketSize, '\0'))));
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(server_.WaitForTrickles("/seg1.ts", 20) && WaitForBufferedTimes(1));
  StopAndExpectNothingLeftWithoutSleeps();
  EXPECT_TRUE(server_.WaitForHangUp("/seg1.ts"));
  EXPECT_EQ(player_.Snapshot().buffered_times.size(), 2U)
      << "an aborted segment reports its buffered time too";
  EXPECT_EQ(server_.CountRequests("/seg2.ts"), 0U);
}

class HlsStopInHandOverTest : public HlsStopTest {
 protected:
  // Calls `stop` while the segment thread waits to hand over its second segment: the parse thread
  // is blocked until the run flag is cleared.
  template <typename Stop>
  void WhileHandOverWaits(Stop stop) {
    std::promise<void> locked;
    std::promise<void> started;
    std::thread parse_thread_waits([&] {
      const TsDemuxLock lock;
      locked.set_value();
      started.get_future().wait();
      EXPECT_TRUE(WaitUntil([] { return !g_hlsStream->ActiveRuns(); }));
    });
    locked.get_future().wait();
    downloader_.BeginDownload(ListUrl());
    started.set_value();
    EXPECT_TRUE(server_.WaitForRequests("/seg1.ts", 1));
    stop();
    parse_thread_waits.join();
  }
};

TEST_F(HlsStopInHandOverTest, WhileASegmentWaitsToBeHandedOver) {
  WhileHandOverWaits([this] { StopAndExpectNothingLeft(); });
  EXPECT_EQ(server_.CountRequests("/seg2.ts"), 0U);
}

TEST_F(HlsStopInHandOverTest, GoodSegmentLeftUnparsedByTheStopIsNotKeptAsBad) {
  WhileHandOverWaits([this] { Stop(); });
  EXPECT_FALSE(bad_.Exists());
}

TEST_F(HlsStopTest, InThePauseBetweenRefreshes) {
  server_.Put(kList, LivePlaylist(0, SegmentUris(0, 3)));
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(server_.WaitForRequests(kList, 2) && WaitForVideo(59));
  StopAndExpectNothingLeft();
}

TEST_F(HlsStopTest, AfterEverythingWasPlayed) {
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(WaitForVideo(59) && WaitForAudio(59));
  StopAndExpectNothingLeft();
}

TEST_F(HlsStopTest, AfterThePlaylistCouldNotBeFetched) {
  server_.Put(kList, CutAfter(0, Whole(std::string("x"))));
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(WaitForMessage("PLAY Failed:" + ListUrl()));
  StopAndExpectNothingLeft();
}

TEST_F(HlsStopTest, FloodOfGarbageDoesNotDelayTheStop) {
  server_.Put("/seg0.ts", std::string(15'000'000, '\0'));  // a console line for each packet
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForBufferedTimes(1));
  StopAndExpectNothingLeft();
  testing::internal::GetCapturedStdout();
}

TEST_F(HlsStopTest, StopInTheDestructorIsReportedLast) {
  server_.Put(kList, LivePlaylist(0, SegmentUris(0, 3)));
  {
    CStreamDownloader inner(&player_);
    inner.BeginDownload(ListUrl());
    ASSERT_TRUE(WaitForVideo(3));
  }
  player_.Close();
  EXPECT_EQ(player_.Snapshot().messages.back(), "PLAY STOP OK");
  EXPECT_FALSE(g_hlsStream->ActiveRuns());
}

}  // namespace
}  // namespace stream
