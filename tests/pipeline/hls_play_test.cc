#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <regex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "hls/hls_delivery.h"
#include "hls/m3u8_downloader.h"
#include "hls/playlist_thread.h"
#include "hls/segment_download.h"
#include "hls/segment_parse.h"
#include "tests/support/hls_play.h"
#include "tests/support/hls_tasks.h"
#include "tests/support/local_file.h"
#include "tests/support/wait_until.h"

namespace stream {
namespace {

using hls_test::OnDemandPlaylist;
using hls_test::SegmentUris;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::UnorderedElementsAre;
using ts_test::Bytes;
using ts_test::MakeStream;

// Matches the whole text. The bytes need not be UTF-8.
MATCHER_P(HasMatch, pattern, "matches " + std::string(pattern)) {
  return std::regex_match(arg, std::regex(pattern));
}

// The first `count` lines.
std::vector<std::string> Lines(const std::string& text, std::size_t count) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; lines.size() < count && std::getline(stream, line);) lines.push_back(line);
  return lines;
}

using HlsOnDemandTest = HlsPlay;

TEST_F(HlsOnDemandTest, EveryFrameButTheLastOfEachKindReachesThePlayerOnceAndInOrder) {
  const Bytes stream = MakeStream(60);
  PutOnDemand(stream, 3);
  ASSERT_TRUE(downloader_.BeginDownload(ListUrl()));
  EXPECT_TRUE(WaitForVideo(59) && WaitForAudio(59));
  EXPECT_TRUE(Stop());
  EXPECT_EQ(Dump(player_.Snapshot()), Dump(FramesOf(stream)));
}

TEST_F(HlsOnDemandTest, ThreeSegmentsReportLinesDurationBufferedTimesAndResultInOrder) {
  PutOnDemand(MakeStream(60), 3);
  const std::string url = ListUrl();
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(59) && WaitForBufferedTimes(3));
  const Record before = player_.Snapshot();
  Stop();
  EXPECT_THAT(before.messages,
              ElementsAre("PLAY M3U8:" + url, "PLAY M3U8 OK:" + url, "PLAY M3U8 H264:" + url));
  EXPECT_THAT(before.results, ElementsAre("PLAY:M3U8 OK:" + url));
  EXPECT_THAT(before.durations, ElementsAre(30.0F));
  EXPECT_THAT(before.buffered_times, ElementsAre(10.0F, 20.0F, 30.0F));
  const Record after = player_.Snapshot();
  EXPECT_THAT(after.durations, Each(30.0F));
  EXPECT_EQ(after.buffered_times, before.buffered_times);
  EXPECT_EQ(after.results, before.results);
}

TEST_F(HlsOnDemandTest, StopReportsItsLines) {
  PutOnDemand(MakeStream(10), 1);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(9) && WaitForAudio(9));
  Stop();
  auto lines = player_.Snapshot().messages;
  ASSERT_EQ(lines.size(), 8U);
  EXPECT_EQ(lines.back(), "PLAY STOP OK");
  lines.pop_back();
  lines.erase(lines.begin(), lines.begin() + 3);
  EXPECT_THAT(lines, UnorderedElementsAre("PLAY STOP...", "m3u8 parse ts thread stop.",
                                          "m3u8 video thread stop.", "m3u8 audio thread stop."));
}

TEST_F(HlsOnDemandTest, ConsoleLogsTheWholeRun) {
  PutOnDemand(MakeStream(10), 3);
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(9) && WaitForAudio(9));
  Stop();
  const std::string console = testing::internal::GetCapturedStdout();
  const std::string date = "\\d+\xC4\xEA\\d+\xD4\xC2\\d+\xC8\xD5 \\d+:\\d+:\\d+";
  EXPECT_THAT(Lines(console, 2),
              ElementsAre(HasMatch("StartDownload: " + date), "[DOWNLOAD]: " + ListUrl()));
  EXPECT_THAT(console, HasSubstr("QUEUEED3:3"));
  for (const std::string& name : SegmentUris(0, 3)) {
    EXPECT_THAT(console, HasSubstr("[DOWNLOAD]: " + server_.Url("/" + name) + "\n"));
  }
  EXPECT_THAT(console, HasSubstr("m3u8 Download thread stop.\n"));
  const std::string stop = console.substr(console.find("m3u8 EndDownload"));
  // The playlist task ends by itself, usually long before the stop.
  const std::string thread =
      "(m3u8 (Download|DownloadParts|parse ts|video|audio) thread stop\\.\n)";
  EXPECT_THAT(stop, HasMatch("m3u8 EndDownload\\.\\.\\.\n" + thread +
                             "{4,5}"
                             "m3u8 video clear\\.\n"
                             "m3u8 audio clear\\.\n"
                             "StopDownload: " +
                             date + " Running: \\d+\xC3\xEB\n"))
      << stop;
  for (const char* name : {"DownloadParts", "parse ts", "video", "audio"}) {
    EXPECT_THAT(stop, HasSubstr("m3u8 " + std::string(name) + " thread stop.\n"));
  }
}

TEST_F(HlsOnDemandTest, PlaylistIsRequestedOnceAndEverySegmentOnce) {
  PutOnDemand(MakeStream(30), 3);
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(29));
  Stop();
  std::vector<std::string> paths;
  for (const auto& request : server_.Requests()) paths.push_back(request.path);
  EXPECT_THAT(paths, ElementsAre("/list.m3u8", "/seg0.ts", "/seg1.ts", "/seg2.ts"));
  for (const auto& request : server_.Requests()) {
    EXPECT_EQ(request.range, "");
    EXPECT_FALSE(request.has_user_agent);
  }
}

TEST_F(HlsOnDemandTest, PlaylistWithoutEntriesReportsADurationOfZeroAtOnce) {
  server_.Put(kList, OnDemandPlaylist({}));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(player_.WaitFor([](const Record& record) { return !record.durations.empty(); }));
  EXPECT_THAT(player_.Snapshot().durations, ElementsAre(0.0F));
  Stop();
}

TEST_F(HlsOnDemandTest, SegmentsNeedNoTsInTheirAddress) {
  const hls_test::Uris names = {"one.aac", "two.bin", "three"};
  PutSegments(MakeStream(30), names);
  server_.Put(kList, OnDemandPlaylist(names));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(29));
  Stop();
}

TEST_F(HlsOnDemandTest, SegmentsOfARedirectedPlaylistAreResolvedAgainstTheRequestedAddress) {
  const auto names = SegmentUris(0, 2);
  PutSegments(MakeStream(20), names);
  server_.Put("/far/away.m3u8", OnDemandPlaylist(names));
  server_.Put(kList, RedirectTo(server_.Url("/far/away.m3u8")));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(19));
  Stop();
}

TEST_F(HlsOnDemandTest, LocalPlaylistPlaysItsLocalSegments) {
  const auto names = SegmentUris(0, 3);
  const auto segments = hls_test::CutIntoSegments(MakeStream(30), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) WriteLocalFile(names[i], segments[i]);
  const std::string list = OnDemandPlaylist(names);
  const std::filesystem::path path = WriteLocalFile("list.m3u8", {list.begin(), list.end()});
  const std::string root = path.generic_string().front() == '/' ? "file://" : "file:///";
  const std::string url = root + path.generic_string();
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(29) && WaitForMessage("PLAY M3U8 OK:" + url));
  Stop();
}

TEST_F(HlsOnDemandTest, WithoutAPlayerFramesArePoppedAndReleased) {
  PutOnDemand(MakeStream(30), 3);
  CStreamDownloader silent(nullptr);
  EXPECT_TRUE(silent.BeginDownload(ListUrl()));
  EXPECT_TRUE(WaitUntil([] {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue != nullptr && g_videoQueue->pushed == 29 && g_videoQueue->count == 0 &&
           g_audioQueue->count == 0;
  }));
  EXPECT_TRUE(silent.EndDownload());
  EXPECT_FALSE(bad_.Exists());
}

// Runs all five tasks of a pipeline whose fields the test can read.
class HlsFiveTasksTest : public HlsTasks {
 protected:
  void Begin(const std::string& url) {
    ResetFrameQueues();
    threads_.emplace_back([this, url] { PlaylistThread(hls_, url); });
    threads_.emplace_back([this] { DownloadPartsThread(hls_); });
    threads_.emplace_back([this, url] { ParseSegmentsThread(hls_, url); });
    const FrameFilters wanted = HlsFrameFilters(hls_);
    threads_.emplace_back([this, wanted] {
      DeliverVideoFrames({hls_.running, hls_.player, wanted.video, "video stop"});
    });
    threads_.emplace_back([this, wanted] {
      DeliverAudioFrames({hls_.running, hls_.player, wanted.audio, "audio stop"});
    });
  }

  void Stop() {
    hls_.running = false;
    stream_.WakeTasks();
    for (std::thread& thread : threads_) thread.join();
    ReleaseFrameQueues();
  }

  std::vector<std::thread> threads_;
  HlsServer server_;
};

TEST_F(HlsFiveTasksTest, ListedDurationOfThreeSegmentsIsClearedByTheFirstFrame) {
  const auto names = SegmentUris(0, 3);
  const auto segments = hls_test::CutIntoSegments(MakeStream(30), names.size());
  for (std::size_t i = 0; i < names.size(); ++i) {
    server_.Put("/" + names[i], GatedAfter(1, Whole(segments[i])));
  }
  server_.Put("/list.m3u8", OnDemandPlaylist(names));
  testing::internal::CaptureStdout();
  Begin(server_.Url("/list.m3u8"));
  EXPECT_TRUE(server_.WaitForRequests("/seg0.ts", 1));
  EXPECT_EQ(hls_.listedDuration.load(), 30.0F);
  EXPECT_THAT(player_.Snapshot().durations, ElementsAre(30.0F));
  for (const std::string& name : names) server_.Release("/" + name);
  EXPECT_TRUE(player_.WaitFor(
      [](const auto& record) { return !record.video.empty() && !record.audio.empty(); }));
  EXPECT_EQ(hls_.listedDuration.load(), 0.0F);
  Stop();
  EXPECT_THAT(testing::internal::GetCapturedStdout(), HasSubstr("QUEUEED3:3"));
}

// A pipeline without the facade, so that a position can be set before its first start.
class HlsStartPositionTest : public HlsPlay {
 protected:
  CM3u8Downloader pipeline_{&player_};
};

TEST_F(HlsStartPositionTest, SegmentsThatEndBeforeThePositionAreNotDownloaded) {
  PutOnDemand(MakeStream(30), 3);
  server_.Put("/seg2.ts", MakeStream(10));
  EXPECT_TRUE(pipeline_.SetStartPostion(25));
  pipeline_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(9));
  EXPECT_TRUE(pipeline_.EndDownload());
  EXPECT_THAT(CountRequests(SegmentUris(0, 3)), ElementsAre(0U, 0U, 1U));
  EXPECT_THAT(player_.Snapshot().buffered_times, ElementsAre(30.0F));
  EXPECT_THAT(player_.Snapshot().durations, Each(30.0F));
}

TEST_F(HlsStartPositionTest, SegmentThatEndsExactlyAtThePositionIsDownloaded) {
  PutOnDemand(MakeStream(30), 3);
  pipeline_.SetStartPostion(20);
  pipeline_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForBufferedTimes(2));
  pipeline_.EndDownload();
  EXPECT_THAT(CountRequests(SegmentUris(0, 3)), ElementsAre(0U, 1U, 1U));
}

TEST_F(HlsStartPositionTest, LineHasNoTime) {
  EXPECT_TRUE(pipeline_.SetStartPostion(3725.5F));
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY M3U8 StartPostion:01:02:05.500"));
}

TEST_F(HlsStartPositionTest, StopResetsThePositionEvenWhenNothingRuns) {
  PutOnDemand(MakeStream(30), 3);
  pipeline_.SetStartPostion(25);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(pipeline_.EndDownload());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
  EXPECT_EQ(player_.Snapshot().messages.size(), 1U) << "more than the position was reported";
  pipeline_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForVideo(29));
  pipeline_.EndDownload();
  EXPECT_THAT(CountRequests(SegmentUris(0, 3)), ElementsAre(1U, 1U, 1U));
}

TEST_F(HlsStartPositionTest, SeekIsStopPositionStart) {
  PutOnDemand(MakeStream(30), 3);
  downloader_.BeginDownload(ListUrl());
  ASSERT_TRUE(WaitForVideo(29));
  Stop();
  player_.Reopen();
  player_.Forget();
  EXPECT_TRUE(downloader_.SetStartPostion(25));
  downloader_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForBufferedTimes(1));
  Stop();
  EXPECT_THAT(CountRequests(SegmentUris(0, 3)), ElementsAre(1U, 1U, 2U));
}

TEST_F(HlsStartPositionTest, LiveStreamSkipsWholeSegmentsToo) {
  PutSegments(MakeStream(30), SegmentUris(0, 3));
  server_.Put(kList, hls_test::LivePlaylist(0, SegmentUris(0, 3)));
  pipeline_.SetStartPostion(25);
  pipeline_.BeginDownload(ListUrl());
  EXPECT_TRUE(WaitForBufferedTimes(1));
  pipeline_.EndDownload();
  EXPECT_THAT(CountRequests(SegmentUris(0, 3)), ElementsAre(0U, 0U, 1U));
}

}  // namespace
}  // namespace stream
