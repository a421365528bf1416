#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <mutex>
#include <random>
#include <string>

#include "mp4/mp4_downloader.h"
#include "tests/support/local_file.h"
#include "tests/support/mp4_play.h"
#include "tests/support/stop_sleep_recorder.h"

namespace stream {
namespace {

using mp4_test::Bytes;
using mp4_test::MakeMovie;
using mp4_test::Movie;
using testing::AnyOf;
using testing::SizeIs;

// tests/conformance tests what every pipeline does at a stop; this file tests what only MP4 does.
class Mp4StopTest : protected RecordedStops, public Mp4PlayFixture {
 protected:
  Mp4StopTest() : RecordedStops([] { return g_mp4Running.load(); }) {}

  bool StopPromptly() {
    const bool was_running = Stop();
    EXPECT_TRUE(sleep_recorder_.WasPrompt(std::chrono::milliseconds(1)));
    return was_running;
  }

  // A long download that sends a little at a time.
  std::string ServeSlowly() {
    ServeMovie(MakeMovie({.samples = 2000, .video_size = 3000}));
    server_.Answer({{.piece = 3000, .pause = std::chrono::milliseconds(1)}});
    return server_.Address();
  }

  static bool HasAnything() {
    const std::lock_guard lock(g_mp4File->mutex);
    return !g_mp4File->ranges.All().empty();
  }
};

TEST_F(Mp4StopTest, PositionOfAPipelineThatNeverPlayedIsAccepted) {
  CMp4Downloader pipeline(&player_);
  EXPECT_TRUE(pipeline.SetStartPostion(12));
  EXPECT_THAT(player_.Snapshot().MessagesWith("PLAY MP4 StartPostion:00:00:12.000 Q:"), SizeIs(1));
}

// How far a stream has got when it is stopped.
struct Stage {
  const char* name;
  Mp4Reply reply;
  Movie (*movie)();  // created by the case that plays it, not at program start
  std::function<bool(const RecordingPlayer::Record&)> reached;
  // Whether a task that reads the movie must have started by then. Otherwise the stop may happen
  // before a worker takes that task, which then reports nothing.
  bool is_read;
};

void PrintTo(const Stage& stage, std::ostream* out) { *out << stage.name; }

class Mp4StopStageTest : public Mp4StopTest, public testing::WithParamInterface<Stage> {};

TEST_P(Mp4StopStageTest, DoesNotDelayTheStop) {
  const Stage& stage = GetParam();
  ServeMovie(stage.movie());
  server_.Answer({stage.reply});
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(server_.WaitForRequests(1));
  EXPECT_TRUE(WaitUntil([&] { return stage.reached(player_.Snapshot()); }));
  EXPECT_TRUE(StopPromptly());
  const auto results = player_.Snapshot().results;
  EXPECT_THAT(results, AnyOf(SizeIs(1), SizeIs(stage.is_read ? 1 : 0)));
}

bool AtOnce(const RecordingPlayer::Record& /*record*/) { return true; }
bool IsReported(const RecordingPlayer::Record& record) { return !record.results.empty(); }
bool HasFrames(const RecordingPlayer::Record& record) { return record.video.size() >= 3; }
bool HasBytes(const RecordingPlayer::Record& /*record*/) {
  const std::lock_guard lock(g_mp4File->mutex);
  return g_mp4File->ranges.First().Contains(0, 100);
}

Movie ShortMovie() { return MakeMovie({.samples = 3}); }
Movie SomeMovie() { return MakeMovie(); }
Movie MovieOfLargeSamples() { return MakeMovie({.samples = 100, .video_size = 9000}); }
Movie MovieWithItsIndexLast() {
  Movie movie = MakeMovie({.samples = 100, .video_size = 900});
  movie.index_first = false;
  return movie;
}
Movie LongMovie() { return MakeMovie({.samples = 20'000, .video_size = 500}); }

constexpr auto kStall = Mp4Reply::End::kStall;

INSTANTIATE_TEST_SUITE_P(
    Stages, Mp4StopStageTest,
    testing::Values(
        Stage{"RequestJustReceived", {}, SomeMovie, AtOnce, false},
        Stage{"StallInTheIndex", {.until = 200, .end = kStall}, SomeMovie, HasBytes, false},
        Stage{"StallBeforeTheIndex",
              {.until = 5000, .end = kStall},
              MovieWithItsIndexLast,
              HasBytes,
              false},
        Stage{"StallInASample",
              {.until = 100'000, .end = kStall},
              MovieOfLargeSamples,
              HasFrames,
              true},
        Stage{"StallWithoutRanges",
              {.ranges = false, .until = 100'000, .end = kStall},
              MovieOfLargeSamples,
              HasFrames,
              true},
        Stage{"LongMovieAtOnce", {}, LongMovie, HasFrames, true},
        Stage{"LongMovieInSmallBlocks", {.piece = 100}, LongMovie, HasBytes, false},
        Stage{"EndOfTheStream", {}, ShortMovie, HasFrames, true},
        Stage{"OutcomeOfAWholeMovie", {}, ShortMovie, IsReported, true},
        Stage{"NoMovieAtAll", {.status = 404}, SomeMovie, IsReported, true}),
    [](const auto& suite) { return suite.param.name; });

TEST_F(Mp4StopTest, OutcomeAtAStopIsOkOnceVideoHasBegun) {
  ServeSlowly();
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForVideo(3));
  EXPECT_TRUE(StopPromptly());
  EXPECT_EQ(player_.Snapshot().results.at(0), "PLAY:MP4 OK:" + server_.Address());
}

TEST_F(Mp4StopTest, LocalFileEndsAtTheStop) {
  const auto file = mp4_test::BuildMp4(LongMovie());
  downloader_.BeginDownload("file://" + WriteLocalFile("long.mp4", file.bytes));
  ASSERT_TRUE(WaitForVideo(5));
  EXPECT_TRUE(StopPromptly());
  EXPECT_LT(player_.Snapshot().video.size(), 20'000U);
}

TEST_F(Mp4StopTest, HundredStopsAndSeeksAtRandomTimesKeepTheFileCorrect) {
  std::mt19937 random(2);  // NOLINT: the same run every time
  const std::string url = ServeSlowly();
  for (int i = 0; i < 100; ++i) {
    player_.Reopen();
    sleep_recorder_.Forget();
    const std::size_t sleeps = sleep_recorder_.Sleeps();
    downloader_.SetStartPostion(static_cast<float>(random() % 90));
    downloader_.BeginDownload(url);
    EXPECT_TRUE(sleep_recorder_.WaitForSleeps(sleeps + random() % 40));
    EXPECT_TRUE(StopPromptly());
    player_.Forget();
    player_.Reopen();
  }
  downloader_.BeginDownload(url);
  EXPECT_TRUE(WaitUntil([] { return HasAnything(); }));
  EXPECT_TRUE(StopPromptly());
  const Bytes bytes = RestartBytes();
  const std::lock_guard lock(g_mp4File->mutex);
  ASSERT_FALSE(g_mp4File->ranges.All().empty());
  for (const auto& [begin, end] : g_mp4File->ranges.All()) {
    ASSERT_LE(end, bytes.size());
    EXPECT_TRUE(std::equal(bytes.begin() + static_cast<std::ptrdiff_t>(begin),
                           bytes.begin() + static_cast<std::ptrdiff_t>(end),
                           file_.bytes.begin() + static_cast<std::ptrdiff_t>(begin)))
        << begin << " to " << end;
  }
}

}  // namespace
}  // namespace stream
