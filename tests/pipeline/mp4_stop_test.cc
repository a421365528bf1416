#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <future>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>

#include "common/frame_queue.h"
#include "mp4/mp4_downloader.h"
#include "tests/support/local_file.h"
#include "tests/support/mp4_play.h"

namespace {

using mp4_test::Bytes;
using mp4_test::MakeMovie;
using mp4_test::Movie;
using testing::AnyOf;
using testing::SizeIs;

class Mp4StopTest : public Mp4PlayFixture {
 protected:
  // A long download with a little at a time.
  std::string ServeSlowly() {
    ServeMovie(MakeMovie({.samples = 2000, .video_size = 3000}));
    server_.Answer({{.piece = 3000, .pause = std::chrono::milliseconds(1)}});
    return server_.Address();
  }

  static bool HasAnything() {
    const std::lock_guard lock(g_mp4FileLock);
    return !g_mp4File->ranges.All().empty();
  }
};

TEST_F(Mp4StopTest, EndOfAPipelineThatIsNotRunningReturnsFalseAndPrintsNothing) {
  CMp4Downloader pipeline(nullptr);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(pipeline.EndDownload());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TEST_F(Mp4StopTest, SecondEndReturnsFalse) {
  ServeMovie(MakeMovie());
  downloader_.BeginDownload(server_.Address());
  EXPECT_TRUE(Stop());
  EXPECT_FALSE(downloader_.EndDownload());
}

TEST_F(Mp4StopTest, EndOfAPipelineThatIsNotRunningLeavesTheQueuesUntouched) {
  CMp4Downloader pipeline(nullptr);
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

TEST_F(Mp4StopTest, PositionOfAPipelineThatNeverPlayedIsTaken) {
  CMp4Downloader pipeline(&player_);
  EXPECT_TRUE(pipeline.SetStartPostion(12));
  EXPECT_THAT(player_.Snapshot().MessagesWith("PLAY MP4 StartPostion:00:00:12.000 Q:"), SizeIs(1));
}

TEST_F(Mp4StopTest, FramesThatAreStillQueuedAreDropped) {
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  player_.during_video = [released] { released.wait(); };
  ServeMovie(MakeMovie());
  downloader_.BeginDownload(server_.Address());
  EXPECT_TRUE(WaitUntil([] {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->pushed == 50;
  }));
  std::thread stopper([this] { downloader_.EndDownload(); });
  EXPECT_TRUE(WaitUntil([] { return !g_mp4Running.load(); }));
  release.set_value();
  stopper.join();
  EXPECT_LT(player_.Snapshot().video.size(), 5U);
  EXPECT_EQ(PopVideoFrame(), nullptr);
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

// Where a stream has got to when the stop comes.
struct Stage {
  const char* name;
  Mp4Reply reply;
  Movie movie;
  std::function<bool(const RecordingPlayer::Record&)> reached;
  // Whether a task that reads the movie must have begun then. Else the stop may come before a
  // worker has taken it, and it never says a word.
  bool is_read;
};

void PrintTo(const Stage& stage, std::ostream* out) { *out << stage.name; }

class Mp4StopStageTest : public Mp4PlayFixture, public testing::WithParamInterface<Stage> {};

TEST_P(Mp4StopStageTest, DoesNotHoldUpTheStop) {
  const Stage& stage = GetParam();
  ServeMovie(stage.movie);
  server_.Answer({stage.reply});
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(server_.WaitForRequests(1));
  EXPECT_TRUE(WaitUntil([&] { return stage.reached(player_.Snapshot()); }));
  EXPECT_TRUE(Stop());
  const auto results = player_.Snapshot().results;
  EXPECT_THAT(results, AnyOf(SizeIs(1), SizeIs(stage.is_read ? 1 : 0)));
}

bool AtOnce(const RecordingPlayer::Record& /*record*/) { return true; }
bool IsReported(const RecordingPlayer::Record& record) { return !record.results.empty(); }
bool HasFrames(const RecordingPlayer::Record& record) { return record.video.size() >= 3; }
bool HasBytes(const RecordingPlayer::Record& /*record*/) {
  const std::lock_guard lock(g_mp4FileLock);
  return g_mp4File->ranges.First().Holds(0, 100);
}

Movie IndexLast(Movie movie) {
  movie.index_first = false;
  return movie;
}
Movie LongMovie() { return MakeMovie({.samples = 20'000, .video_size = 500}); }

constexpr auto kStall = Mp4Reply::End::kStall;

INSTANTIATE_TEST_SUITE_P(
    Stages, Mp4StopStageTest,
    testing::Values(
        Stage{"ServerThatHasJustBeenAsked", {}, MakeMovie(), AtOnce, false},
        Stage{"SilentServer", {.silent = true}, MakeMovie(), AtOnce, false},
        Stage{"StallInTheIndex", {.until = 200, .end = kStall}, MakeMovie(), HasBytes, false},
        Stage{"StallInFrontOfTheIndex",
              {.until = 5000, .end = kStall},
              IndexLast(MakeMovie({.samples = 100, .video_size = 900})),
              HasBytes,
              false},
        Stage{"StallInASample",
              {.until = 100'000, .end = kStall},
              MakeMovie({.samples = 100, .video_size = 9000}),
              HasFrames,
              true},
        Stage{"StallWithoutRanges",
              {.ranges = false, .until = 100'000, .end = kStall},
              MakeMovie({.samples = 100, .video_size = 9000}),
              HasFrames,
              true},
        Stage{"LongMovieAtOnce", {}, LongMovie(), HasFrames, true},
        Stage{"LongMovieInSmallPieces", {.piece = 100}, LongMovie(), HasBytes, false},
        Stage{"EndOfTheStream", {}, MakeMovie({.samples = 3}), HasFrames, true},
        Stage{"VerdictOfAWholeMovie", {}, MakeMovie({.samples = 3}), IsReported, true},
        Stage{"NoMovieAtAll", {.status = 404}, MakeMovie(), IsReported, true}),
    [](const auto& suite) { return suite.param.name; });

TEST_F(Mp4StopTest, VerdictAtAStopTellsWhetherVideoHasBegun) {
  ServeSlowly();
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForVideo(3));
  EXPECT_TRUE(Stop());
  EXPECT_EQ(player_.Snapshot().results.at(0), "PLAY:MP4 OK:" + server_.Address());
}

TEST_F(Mp4StopTest, LocalFileEndsAtTheStop) {
  const auto file = mp4_test::BuildMp4(LongMovie());
  downloader_.BeginDownload("file://" + WriteLocalFile("long.mp4", file.bytes));
  ASSERT_TRUE(WaitForVideo(5));
  EXPECT_TRUE(Stop());
  EXPECT_LT(player_.Snapshot().video.size(), 20'000U);
}

TEST_F(Mp4StopTest, HundredStopsAtRandomTimesFromAnotherThread) {
  std::mt19937 random(1);  // NOLINT: the same run every time
  const std::string url = ServeSlowly();
  for (int i = 0; i < 100; ++i) {
    player_.Reopen();
    downloader_.BeginDownload(url);
    std::thread stopper([&] {
      std::this_thread::sleep_for(std::chrono::microseconds(random() % 40'000));
      EXPECT_TRUE(Stop());
    });
    stopper.join();
  }
  EXPECT_THAT(player_.Snapshot().MessagesWith("PLAY MP4:"), SizeIs(100));
  EXPECT_THAT(player_.Snapshot().MessagesWith("PLAY MP4 RE:"), SizeIs(99));
}

TEST_F(Mp4StopTest, HundredStopsAndSeeksAtRandomTimesLeaveTheFileRight) {
  std::mt19937 random(2);  // NOLINT: the same run every time
  const std::string url = ServeSlowly();
  for (int i = 0; i < 100; ++i) {
    player_.Reopen();
    downloader_.SetStartPostion(static_cast<float>(random() % 90));
    downloader_.BeginDownload(url);
    std::this_thread::sleep_for(std::chrono::microseconds(random() % 10'000));
    EXPECT_TRUE(Stop());
    player_.Forget();
    player_.Reopen();
  }
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitUntil([] { return HasAnything(); }));
  EXPECT_TRUE(Stop());
  const Bytes bytes = RestartBytes();
  const std::lock_guard lock(g_mp4FileLock);
  ASSERT_FALSE(g_mp4File->ranges.All().empty());
  for (const auto& [begin, end] : g_mp4File->ranges.All()) {
    ASSERT_LE(end, bytes.size());
    EXPECT_TRUE(std::equal(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                           bytes.begin() + static_cast<std::ptrdiff_t>(end),
                           file_.bytes.begin() + static_cast<std::ptrdiff_t>(begin)))
        << begin << " to " << end;
  }
}

TEST_F(Mp4StopTest, StopRightAfterTheStartLeavesNoTaskForTheNext) {
  ServeMovie(MakeMovie());
  for (int i = 0; i < 20; ++i) {
    downloader_.BeginDownload(server_.Url("/other.mp4"));
    downloader_.EndDownload();
  }
  player_.Forget();
  EXPECT_EQ(PlayToTheEnd(), Expected());
  EXPECT_EQ(server_.CountRequests("/a.mp4"), 1U);
}

TEST_F(Mp4StopTest, DestructorOfThePipelineStopsWhatPlays) {
  const std::string url = ServeSlowly();
  std::chrono::steady_clock::time_point before;
  {
    CMp4Downloader pipeline(&player_);
    pipeline.BeginDownload(url);
    ASSERT_TRUE(WaitForVideo(5));
    before = std::chrono::steady_clock::now();
  }
  EXPECT_LT(std::chrono::steady_clock::now() - before, kStopLimit);
  player_.Close();
  EXPECT_FALSE(g_mp4Running.load());
}

TEST_F(Mp4StopTest, DestructorOfTheFacadeStopsWhatPlays) {
  const std::string url = ServeSlowly();
  {
    CStreamDownloader inner(&player_);
    inner.BeginDownload(url);
    ASSERT_TRUE(WaitForVideo(5));
  }
  player_.Close();
  EXPECT_FALSE(g_mp4Running.load());
}

TEST_F(Mp4StopTest, DestructorOfAPipelineThatNeverPlayedIsSilent) {
  testing::internal::CaptureStdout();
  { const CMp4Downloader pipeline(&player_); }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
