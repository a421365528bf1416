#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "common/frame_queue.h"
#include "flv/flv_downloader.h"
#include "flv/flv_stream.h"
#include "tests/support/blocked_audio_call.h"
#include "tests/support/flv_play.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/wait_until.h"

namespace stream {
namespace {

using flv_test::Bytes;
using flv_test::Join;
using flv_test::MakeStream;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;

using FlvPipelineTest = FlvPlayFixture;

TEST_F(FlvPipelineTest, EveryFrameReachesThePlayerOnceAndInOrder) {
  const Bytes stream = MakeStream(50);
  server_.Serve(stream);
  ExpectAllFrames(server_.Url("/plain/a.flv"), stream);
  const Record record = player_.Snapshot();
  ASSERT_EQ(record.video.size(), 52U);
  ASSERT_EQ(record.audio.size(), 50U);
  EXPECT_EQ(record.clocks.size(), 50U);
  EXPECT_EQ(record.video.back().play_time, 49U * 40 * 90);
}

TEST_F(FlvPipelineTest, BlocksOfAnySizeWithPausesGiveTheSameFrames) {
  const Bytes stream = MakeStream(20);  // short, since a byte at a time is slow
  server_.Serve(stream);
  for (const std::string piece : {"1", "17", "4096", "1000000"}) {
    SCOPED_TRACE("blocks of " + piece);
    player_.Reopen();
    player_.Forget();
    ExpectAllFrames(server_.Url("/paced/" + piece + "/a.flv"), stream);
  }
}

TEST_F(FlvPipelineTest, OnlyStatusLinesAndTheResultAreReported) {
  server_.Serve(MakeStream(10));
  const std::string url = server_.Url("/plain/a.flv");
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(12));
  Stop();
  const Record record = player_.Snapshot();
  EXPECT_THAT(record.messages, ElementsAre("PLAY FLV:" + url, "PLAY FLV CACHE_NO OK:" + url));
  EXPECT_THAT(record.results, ElementsAre("PLAY:FLV CACHE_NO OK:" + url));
  EXPECT_TRUE(record.durations.empty());
  EXPECT_TRUE(record.buffered_times.empty());
}

TEST_F(FlvPipelineTest, RequestHasARangeFromZeroAndAUserAgent) {
  server_.Serve(MakeStream(3));
  downloader_.BeginDownload(server_.Url("/plain/a.flv?x&pt=android&"));
  ASSERT_TRUE(server_.WaitForRequests(1));
  Stop();
  EXPECT_EQ(server_.Requests().front().range, "bytes=0-");
  EXPECT_THAT(server_.Requests().front().user_agent,
              StartsWith("Mozilla/5.0 (Linux; U; Android 4.0.3;"));
}

TEST_F(FlvPipelineTest, TenKibibytesDoNotStartThePlayTaskDuringTheDownload) {
  constexpr std::size_t kTasks = 3;  // the delivery of video and audio, and the play task
  const Bytes stream = flv_test::MakeStreamOfSize(std::size_t{2} * 10240);
  server_.Serve(stream);
  const std::string url = server_.Url("/gated/a.flv");
  SimulatedClock clock;
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitUntil([] { return g_flvStream->UnreadSize() == 10240; }));
  EXPECT_TRUE(clock.WaitForWaiters(kTasks));
  const std::size_t checks = clock.UnmetChecks();
  g_flvStream->Wake();  // only wakes the play task while the pipeline runs
  EXPECT_TRUE(WaitUntil([&] { return clock.UnmetChecks() > checks; }));
  EXPECT_TRUE(clock.WaitForWaiters(kTasks));
  EXPECT_FALSE(player_.Snapshot().HasMessage(OkLine(url)));
  clock.Release();
  server_.Release();
  EXPECT_TRUE(WaitForMessage(OkLine(url)));
  Stop();
}

TEST_F(FlvPipelineTest, MoreThanTenKibibytesStartThePlayTaskDuringTheDownload) {
  server_.Serve(flv_test::MakeStreamOfSize(std::size_t{2} * 10241));
  const std::string url = server_.Url("/gated/a.flv");
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForMessage(OkLine(url)));
  EXPECT_TRUE(WaitForVideo(10));
  Stop();
}

TEST_F(FlvPipelineTest, StalledStreamContinuesWhereItStopped) {
  const Bytes stream = MakeStream(100);
  server_.Serve(stream);
  const FrameDump expected = ParseFlv(stream).frames;
  downloader_.BeginDownload(server_.Url("/gated/a.flv"));
  ASSERT_TRUE(WaitForVideo(40));
  server_.Release();
  EXPECT_TRUE(WaitForVideo(expected.video.size()) && WaitForAudio(expected.audio.size()));
  Stop();
  EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), DumpText(expected));
}

TEST_F(FlvPipelineTest, EndlessStreamPlaysWhileItIsReceived) {
  downloader_.BeginDownload(ServeLive());
  EXPECT_TRUE(WaitForVideo(300) && WaitForAudio(300));
  EXPECT_TRUE(Stop());
}

TEST_F(FlvPipelineTest, WithoutAPlayerFramesArePoppedAndReleased) {
  server_.Serve(MakeStream(30));
  CStreamDownloader silent(nullptr);
  EXPECT_TRUE(silent.BeginDownload(server_.Url("/plain/a.flv")));
  EXPECT_TRUE(WaitUntil([] {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->pushed == 32 && g_audioQueue->pushed == 30 && g_videoQueue->count == 0 &&
           g_audioQueue->count == 0;
  }));
  EXPECT_TRUE(silent.SetStartPostion(1));
  EXPECT_TRUE(silent.EndDownload());
}

TEST_F(FlvPipelineTest, DeliveredVideoIsReleasedWhileAnAudioCallbackBlocks) {
  constexpr int kFrames = 300;
  server_.Serve(MakeStream(kFrames, 100'000));
  {
    const BlockedAudioCall blocked(player_);
    downloader_.BeginDownload(server_.Url("/plain/a.flv"));
    EXPECT_TRUE(WaitForVideo(kFrames + 2));
    EXPECT_TRUE(BlockedAudioCall::WaitUntilMemoryIsNearQueueSize());
  }
  EXPECT_TRUE(WaitForAudio(kFrames));
  Stop();
}

TEST_F(FlvPipelineTest, EndlessStreamOfAnotherFormatIsDroppedUntilTheStop) {
  server_.Serve(Bytes(1'000'000, 0x47));
  const std::string url = server_.Url("/endless/a.flv");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForMessage("PLAY FLV NO:" + url));
  ASSERT_TRUE(WaitUntil([] { return g_flvStream->DroppedSize() > 0; }));
  EXPECT_TRUE(WaitUntil([] {
    EXPECT_EQ(g_flvStream->UnreadSize(), 0U);
    return g_flvStream->DroppedSize() > 100'000'000;
  }));
  EXPECT_TRUE(Stop());
  EXPECT_EQ(server_.Requests().size(), 1U);
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV:" + url, "PLAY FLV NO:" + url));
}

TEST_F(FlvPipelineTest, ConsoleLogsTheStreamTheEndOfEachTaskAndTheStop) {
  server_.Serve(MakeStream(3));
  const std::string url = server_.Url("/plain/a.flv");
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitForVideo(5) && WaitForAudio(3));
  EXPECT_TRUE(WaitUntil([] { return g_flvStream->UnreadSize() == 0; }));
  Stop();
  const std::string console = testing::internal::GetCapturedStdout();
  const std::string transfer = "[DOWNLOAD]: " + url + "\n";
  for (const char* text : {transfer.c_str(), "headlength:9\nsssize:4\nppsize:3\n", "read over\n",
                           "flv Download thread stop.\n", "flv EndDownload...\n",
                           "flv video thread stop.\n", "flv audio thread stop.\n"}) {
    EXPECT_THAT(console, HasSubstr(text));
  }
  EXPECT_THAT(console, testing::EndsWith("flv video clear.\nflv audio clear.\n"));
}

TEST_F(FlvPipelineTest, StartPositionIsReportedButPlaybackStartsAtZero) {
  const Bytes stream = MakeStream(20);
  server_.Serve(stream);
  const std::string url = server_.Url("/plain/a.flv");
  downloader_.BeginDownload(url);
  ASSERT_TRUE(WaitForVideo(22));
  Stop();
  player_.Reopen();
  player_.Forget();
  EXPECT_TRUE(downloader_.SetStartPostion(3725.5F));
  const auto told = player_.Snapshot().MessagesWith("PLAY FLV StartPostion:");
  ASSERT_EQ(told.size(), 1U);
  EXPECT_THAT(told.front(), testing::MatchesRegex("PLAY FLV StartPostion:01:02:05\\.500 Q:.+s"));
  ExpectAllFrames(url, stream);
  EXPECT_EQ(server_.Requests()[1].range, "bytes=0-");
}

// A body that is played to its end, and whether it is reported as FLV.
struct Body {
  const char* name;
  std::string bytes;
  bool is_flv;
};

void PrintTo(const Body& body, std::ostream* out) { *out << body.name; }

std::string Text(const Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

class FlvBodyTest : public FlvPlayFixture, public testing::WithParamInterface<Body> {};

TEST_P(FlvBodyTest, IsReportedOnceAndGivesNoFrame) {
  server_.Serve(GetParam().bytes);
  const std::string url = server_.Url("/plain/a.flv");
  downloader_.BeginDownload(url);
  EXPECT_TRUE(player_.WaitFor([](const Record& record) { return !record.results.empty(); }));
  EXPECT_TRUE(Stop());
  const Record record = player_.Snapshot();
  const std::string outcome = (GetParam().is_flv ? "FLV CACHE_NO OK:" : "FLV NO:") + url;
  EXPECT_THAT(record.messages, ElementsAre("PLAY FLV:" + url, "PLAY " + outcome));
  EXPECT_THAT(record.results, ElementsAre("PLAY:" + outcome));
  EXPECT_TRUE(record.video.empty() && record.audio.empty());
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, FlvBodyTest,
    testing::Values(
        Body{"Empty", "", false}, Body{"TwoBytes", "FL", false},
        Body{"HeaderAlone", Text(flv_test::Header()), true},
        Body{"ThirteenBytes", Text(Join({flv_test::Header(), flv_test::LastBackPointer()})), true},
        Body{"ShortHtmlPage", "<html><body>404</body></html>", false},
        Body{"LongHtmlPage", "<html>" + std::string(1'000'000, '.'), false},
        Body{"TextPage", "no such page", false}, Body{"Zeros", std::string(50'000, '\0'), false},
        Body{"HeaderAndZeros", Text(flv_test::Header()) + std::string(50'000, '\0'), true},
        Body{"TransportStream", "G" + std::string(50'000, 'x'), false}),
    [](const auto& suite) { return suite.param.name; });

}  // namespace
}  // namespace stream
