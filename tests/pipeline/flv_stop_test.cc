#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <future>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>

#include "common/frame_queue.h"
#include "flv/flv_downloader.h"
#include "flv/flv_stream.h"
#include "tests/support/flv_play.h"
#include "tests/support/local_file.h"
#include "tests/support/wait_until.h"

namespace {

using flv_test::Bytes;
using flv_test::Join;
using flv_test::MakeStream;

using FlvStopTest = FlvPlayFixture;

TEST_F(FlvStopTest, EndOfAPipelineThatIsNotRunningReturnsFalseAndPrintsNothing) {
  CFlvDownloader pipeline(nullptr);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(pipeline.EndDownload());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(FlvStopTest, SecondEndReturnsFalse) {
  server_.Serve(MakeStream(5));
  downloader_.BeginDownload(server_.Url("/plain/a.flv"));
  EXPECT_TRUE(Stop());
  EXPECT_FALSE(downloader_.EndDownload());
}

TEST_F(FlvStopTest, EndOfAPipelineThatIsNotRunningLeavesTheQueuesUntouched) {
  CFlvDownloader pipeline(nullptr);
  ResetFrameQueues();
  const std::uint8_t byte = 1;
  FrameRecord frame;
  ASSERT_EQ(CreateFrameNode(frame, 0, 0, &byte, 1, true, true), 0);
  {
    const std::lock_guard lock(g_frameQueueMutex);
    ASSERT_EQ(PushFrame(frame, g_videoQueue), 0);
  }
  EXPECT_FALSE(pipeline.EndDownload());
  EXPECT_NE(PopVideoFrame(), nullptr);
}

TEST_F(FlvStopTest, FramesThatAreStillQueuedAreDropped) {
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  player_.during_video = [released] { released.wait(); };
  server_.Serve(MakeStream(50));
  downloader_.BeginDownload(server_.Url("/plain/a.flv"));
  EXPECT_TRUE(WaitUntil([] {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->pushed == 52;
  }));
  std::thread stopper([this] { downloader_.EndDownload(); });
  EXPECT_TRUE(WaitUntil([] { return !g_flvRunning.load(); }));
  release.set_value();
  stopper.join();
  EXPECT_LT(player_.Snapshot().video.size(), 5U);
  EXPECT_EQ(PopVideoFrame(), nullptr);
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

// Where a stream has got to when the stop comes.
struct Stage {
  const char* name;
  const char* path;
  Bytes body;
  std::function<bool(const RecordingPlayer::Record&)> reached;
  // Whether a task that reads the stream must have begun then. Else the stop may come before a
  // worker has taken it, and it never says a word.
  bool is_read;
};

void PrintTo(const Stage& stage, std::ostream* out) { *out << stage.name; }

class FlvStopStageTest : public FlvPlayFixture, public testing::WithParamInterface<Stage> {};

TEST_P(FlvStopStageTest, DoesNotHoldUpTheStop) {
  const Stage& stage = GetParam();
  server_.Serve(stage.body);
  downloader_.BeginDownload(server_.Url(stage.path));
  ASSERT_TRUE(server_.WaitForRequests(1));
  EXPECT_TRUE(WaitUntil([&] { return stage.reached(player_.Snapshot()); }));
  EXPECT_TRUE(Stop());
  const auto results = player_.Snapshot().results;
  EXPECT_THAT(results, testing::AnyOf(testing::SizeIs(1), testing::SizeIs(stage.is_read ? 1 : 0)));
}

bool AtOnce(const RecordingPlayer::Record& /*record*/) { return true; }
bool IsReported(const RecordingPlayer::Record& record) { return !record.results.empty(); }
bool HasFrames(const RecordingPlayer::Record& record) { return record.video.size() >= 3; }
template <std::uint32_t kCount>
bool HasStaged(const RecordingPlayer::Record& /*record*/) {
  return g_flvStream->UnreadSize() >= kCount;
}

Bytes LongScriptTag() { return Join({flv_test::Header(), flv_test::ScriptTag(Bytes(100'000, 1))}); }

INSTANTIATE_TEST_SUITE_P(
    Stages, FlvStopStageTest,
    testing::Values(
        Stage{"ServerThatHasJustBeenAsked", "/plain/a.flv", MakeStream(50), AtOnce, false},
        Stage{"SilentServer", "/silent/a.flv", {}, AtOnce, false},
        Stage{"StallBeforeEnoughHasCome", "/stall/a.flv", MakeStream(5), HasStaged<100>, false},
        Stage{"StallInATagThatIsSkipped", "/stall/a.flv", LongScriptTag(), IsReported, true},
        Stage{"StallInANalUnit", "/stall/a.flv", MakeStream(10, 20'000), HasFrames, true},
        Stage{"FastServerWithoutAnEnd", "/endless/a.flv", MakeStream(20, 50'000), HasFrames, true},
        Stage{"EndOfTheStream", "/plain/a.flv", MakeStream(3), HasFrames, true},
        Stage{"NoStreamAtAll", "/plain/a.flv", Bytes(100'000, 7), IsReported, true}),
    [](const auto& suite) { return suite.param.name; });

TEST_F(FlvStopTest, LiveStreamEndsInMidTransfer) {
  downloader_.BeginDownload(ServeLive());
  ASSERT_TRUE(WaitForVideo(50));
  EXPECT_TRUE(Stop());
}

TEST_F(FlvStopTest, LocalFileEndsAtTheStop) {
  const Bytes stream = flv_test::MakeStreamOfSize(12 << 20, 300);
  downloader_.BeginDownload("file://" + WriteLocalFile("long.flv", stream));
  ASSERT_TRUE(WaitForVideo(5));
  EXPECT_TRUE(WaitUntil([] { return g_flvStream->UnreadSize() > 1'000'000; }));
  EXPECT_TRUE(Stop());
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U) << "the memory is given back";
}

TEST_F(FlvStopTest, HundredStopsAtRandomTimesFromAnotherThread) {
  std::mt19937 random(1);  // NOLINT: the same run every time
  const std::string url = ServeLive();
  for (int i = 0; i < 100; ++i) {
    player_.Reopen();
    downloader_.BeginDownload(url);
    std::thread stopper([&] {
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 40'000));
      EXPECT_TRUE(Stop());
    });
    stopper.join();
  }
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY FLV:").size(), 100U);
  EXPECT_EQ(player_.Snapshot().MessagesWith("PLAY FLV RE:").size(), 99U);
}

TEST_F(FlvStopTest, StopRightAfterTheStartLeavesNoTaskForTheNext) {
  const Bytes stream = MakeStream(20);
  server_.Serve(stream);
  for (int i = 0; i < 20; ++i) {
    downloader_.BeginDownload(server_.Url("/plain/other.flv"));
    downloader_.EndDownload();
  }
  player_.Forget();
  ExpectAllFrames(server_.Url("/plain/a.flv"), stream);
  EXPECT_EQ(server_.CountRequests("/plain/a.flv"), 1U);
}

TEST_F(FlvStopTest, DestructorOfThePipelineStopsWhatPlays) {
  const std::string url = ServeLive();
  std::chrono::steady_clock::time_point before;
  {
    CFlvDownloader pipeline(&player_);
    pipeline.BeginDownload(url);
    ASSERT_TRUE(WaitForVideo(5));
    before = std::chrono::steady_clock::now();
  }
  EXPECT_LT(std::chrono::steady_clock::now() - before, kStopLimit);
  player_.Close();
  EXPECT_FALSE(g_flvRunning.load());
}

TEST_F(FlvStopTest, DestructorOfTheFacadeStopsWhatPlays) {
  const std::string url = ServeLive();
  {
    CStreamDownloader inner(&player_);
    inner.BeginDownload(url);
    ASSERT_TRUE(WaitForVideo(5));
  }
  player_.Close();
  EXPECT_FALSE(g_flvRunning.load());
}

TEST_F(FlvStopTest, DestructorOfAPipelineThatNeverPlayedIsSilent) {
  testing::internal::CaptureStdout();
  { const CFlvDownloader pipeline(&player_); }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
