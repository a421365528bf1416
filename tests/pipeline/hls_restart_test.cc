#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/support/hls_play.h"
#include "ts/ts_demux.h"

namespace stream {
namespace {

using hls_test::LivePlaylist;
using hls_test::SegmentUris;
using testing::Each;
using testing::ElementsAre;
using ts_test::MakeStream;

class HlsRestartTest : public HlsPlay {
 protected:
  // Plays the stream to its end, stops, and clears the demultiplexer and the player. Only what a
  // stop leaves in HLS remains.
  void PlayOnce(std::size_t frames) {
    downloader_.BeginDownload(ListUrl());
    ASSERT_TRUE(WaitForVideo(frames) && WaitForAudio(frames));
    Stop();
    const TsDemuxLock lock;
    ProcessTsDemuxer().Reset();
    player_.Reopen();
    player_.Forget();
  }

  static std::size_t CountOf(const std::string& words, const std::string& text) {
    std::size_t count = 0;
    for (auto at = text.find(words); at != std::string::npos; at = text.find(words, at + 1))
      ++count;
    return count;
  }

  static constexpr std::uint64_t kFirstPts = 90'000;
};

TEST_F(HlsRestartTest, SecondRunSkipsTheFirstVideoFrameAndNoAudioFrame) {
  PutOnDemand(MakeStream(20), 2);
  PlayOnce(19);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(18) && WaitForAudio(19));
  Stop();
  EXPECT_EQ(player_.Snapshot().video.front().pts, kFirstPts + 3'600);
  EXPECT_EQ(player_.Snapshot().audio.front().pts, kFirstPts);
}

TEST_F(HlsRestartTest, FirstRunDeliversTheFirstVideoFrame) {
  PutOnDemand(MakeStream(20), 2);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(19));
  Stop();
  EXPECT_EQ(player_.Snapshot().video.front().pts, kFirstPts);
}

TEST_F(HlsRestartTest, TransportStreamAfterHlsDeliversItsFirstFrame) {
  PutOnDemand(MakeStream(20), 2);
  PlayOnce(19);
  server_.Put("/plain.ts", MakeStream(20));
  downloader_.BeginDownload(server_.Url("/plain.ts"));
  EXPECT_TRUE(WaitForVideo(19));
  Stop();
  EXPECT_EQ(player_.Snapshot().video.front().pts, kFirstPts);
}

TEST_F(HlsRestartTest, SameAddressStartsFromTheBeginning) {
  PutOnDemand(MakeStream(30), 3);
  PlayOnce(29);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForAudio(29));
  EXPECT_TRUE(WaitForBufferedTimes(3));
  const Record record = player_.Snapshot();
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 3)), Each(2U));
  EXPECT_THAT(record.durations, ElementsAre(30.0F));
  EXPECT_THAT(record.buffered_times, ElementsAre(10.0F, 20.0F, 30.0F));
  EXPECT_EQ(record.MessagesWith("PLAY M3U8 H264:").size(), 1U);
}

TEST_F(HlsRestartTest, LiveStreamWithSmallerNumbersStartsFromTheBeginning) {
  PutSegments(MakeStream(20), SegmentUris(0, 2));
  server_.Put(kList, LivePlaylist(100, SegmentUris(0, 2)));
  PlayOnce(19);
  server_.Put(kList, LivePlaylist(0, SegmentUris(0, 2)));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForAudio(19));
  Stop();
}

TEST_F(HlsRestartTest, AnotherAddressPlaysAfterAStalledOne) {
  PutOnDemand(MakeStream(20), 2);
  server_.Put("/stalled.m3u8", StalledAfter(10, Whole(LivePlaylist(0, SegmentUris(0, 2)))));
  downloader_.BeginDownload(server_.Url("/stalled.m3u8"));
  ASSERT_TRUE(server_.WaitForRequests(1));
  Stop();
  player_.Reopen();
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(18) && WaitForAudio(19));
  Stop();
  EXPECT_TRUE(player_.Snapshot().HasMessage("PLAY M3U8 OK:" + ListUrl()));
}

TEST_F(HlsRestartTest, StopRightAfterTheStartLeavesNoTaskForTheNextStart) {
  PutOnDemand(MakeStream(20), 2);
  server_.Put("/other.m3u8", LivePlaylist(0, SegmentUris(0, 2)));
  for (int i = 0; i < 20; ++i) {
    downloader_.BeginDownload(server_.Url("/other.m3u8"));
    downloader_.EndDownload();
  }
  {
    const TsDemuxLock lock;
    ProcessTsDemuxer().Reset();
  }
  player_.Forget();
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(18) && WaitForAudio(19));
  Stop();
  EXPECT_EQ(server_.CountRequests(kList), 1U);
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY M3U8 OK:").size(), 1U);
}

TEST_F(HlsRestartTest, SecondStartWithoutAStopFetchesAndReportsThePlaylistToo) {
  PutSegments(MakeStream(60), SegmentUris(0, 6));
  server_.Put(kList, LivePlaylist(0, SegmentUris(0, 6)));
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(WaitForVideo(1));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(server_.WaitForRequests(kList, 4));
  EXPECT_TRUE(player_.WaitFor([](const Record& record) { return record.results.size() == 2; }));
  EXPECT_TRUE(Stop());
  const std::string console = testing::internal::GetCapturedStdout();
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY STOP OK").size(), 1U);
  EXPECT_THAT(player_.Snapshot().results, Each("PLAY:M3U8 OK:" + ListUrl()));
  EXPECT_GE(CountOf("QUEUEED1:6", console), 2U);
  EXPECT_EQ(CountOf("QUEUEED1:", console), CountOf("QUEUEED1:6", console))
      << "two playlist texts are mixed";
}

TEST_F(HlsRestartTest, SecondStartAfterASilentOneIsStoppedInTimeToo) {
  PutOnDemand(MakeStream(20), 2);
  server_.Put("/silent.m3u8", Silent());
  downloader_.BeginDownload(server_.Url("/silent.m3u8"));
  ASSERT_TRUE(server_.WaitForRequests(1));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(Stop());
  EXPECT_EQ(server_.CountRequests(kList), 0U) << "the second request waits for the first to end";
}

TEST_F(HlsRestartTest, OneStopEndsThreeImmediateStarts) {
  PutSegments(MakeStream(60), SegmentUris(0, 6));
  server_.Put(kList, LivePlaylist(0, SegmentUris(0, 6)));
  for (int i = 0; i < 3; ++i) downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(server_.WaitForRequests(kList, 3));
  EXPECT_TRUE(Stop());
  const std::size_t lists = server_.CountRequests(kList);
  player_.Reopen();
  player_.Forget();
  const auto next = SegmentUris(0, 6, "next");
  PutSegments(MakeStream(60), next);
  server_.Put("/next.m3u8", hls_test::OnDemandPlaylist(next));
  downloader_.BeginDownload(server_.Url("/next.m3u8"));
  EXPECT_TRUE(WaitForAudio(50));
  Stop();
  EXPECT_EQ(server_.CountRequests(kList), lists);
  EXPECT_EQ(server_.CountRequests("/next.m3u8"), 1U);
  EXPECT_THAT(CountRequests(next), Each(1U));
}

TEST_F(HlsRestartTest, SecondFacadeInTheProcessPlaysAfterTheFirstIsGone) {
  PutOnDemand(MakeStream(20), 2);
  {
    CStreamDownloader first(&player_);
    first.BeginDownload(ListUrl());
    ASSERT_TRUE(WaitForVideo(19));
  }
  player_.Forget();
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(19));  // plus one left over from the first run, minus one skipped
  Stop();
}

}  // namespace
}  // namespace stream
