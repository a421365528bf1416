// The play task of the MP4 pipeline, run step by step.
#include "mp4/mp4_play.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>

#include "tests/support/action_player.h"
#include "tests/support/mp4_tasks.h"
#include "tests/support/polling.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/wait_until.h"

namespace stream {
namespace {

using mp4_test::BuildMp4;
using mp4_test::Bytes;
using mp4_test::ExpectedFrames;
using mp4_test::MakeMovie;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kUrl[] = "http://host/a.mp4";

class Mp4PlayTest : public Mp4Tasks {
 protected:
  Mp4PlayTest() {
    BeginAddress("restart.mp4");
    reader_.Reset(CurrentRun());
  }

  void Play(const std::string& url = kUrl) {
    PlayMp4({url, CurrentRun(), PlayerPort(&player_), reader_, downloading_, start_position_});
  }

  // Extends the restart file to the first `size` bytes of a stream.
  static void Write(const Bytes& stream, std::size_t size) {
    const std::lock_guard lock(g_mp4File->mutex);
    const auto end = stream.begin() + static_cast<std::ptrdiff_t>(size);
    const auto begin = stream.begin() + static_cast<std::ptrdiff_t>(g_mp4File->ranges.First().end);
    AppendToLocalFile("restart.mp4", {begin, end});  // like the download, truncates nothing
    g_mp4File->ranges.Add(0, size);
    ++g_mp4File->revision;
  }

  static std::uint64_t Pushed() {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->pushed;
  }

  std::shared_ptr<std::atomic<bool>> downloading_ = std::make_shared<std::atomic<bool>>(true);
};

TEST_F(Mp4PlayTest, PassAfterTheEndOfTheDownloadReadsTheFile) {
  const auto movie = MakeMovie();
  const Bytes stream = BuildMp4(movie).bytes;
  Write(stream, stream.size());
  *downloading_ = false;
  Play();
  EXPECT_EQ(DumpText(PopQueuedFrames()), DumpText(ExpectedFrames(movie)));
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 OK:http://host/a.mp4"));
}

TEST_F(Mp4PlayTest, PassesContinueWhileTheFileGrows) {
  const auto movie = MakeMovie();
  const auto file = BuildMp4(movie);
  std::thread play([this] { Play(); });
  for (const std::size_t sample : {1U, 10U, 11U, 30U}) {
    Write(file.bytes, file.offsets[0][sample]);
    EXPECT_TRUE(WaitUntil([sample] { return Pushed() == sample; }));
  }
  EXPECT_THAT(player_.Snapshot().results, IsEmpty());
  Write(file.bytes, file.bytes.size());
  *downloading_ = false;
  play.join();
  EXPECT_EQ(DumpText(PopQueuedFrames()), DumpText(ExpectedFrames(movie)));
}

TEST_F(Mp4PlayTest, EmptyDownloadHasNoVideo) {
  *downloading_ = false;
  Play();
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY MP4 NO:http://host/a.mp4"));
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 NO:http://host/a.mp4"));
}

TEST_F(Mp4PlayTest, BytesReceivedDuringAPassArePlayedBeforeTheOutcome) {
  const auto movie = MakeMovie();
  const auto file = BuildMp4(movie);
  Write(file.bytes, file.offsets[0][5]);
  ActionPlayer player;
  player.once = [&] {
    Write(file.bytes, file.bytes.size());
    *downloading_ = false;
  };
  Mp4TrackReader reader{PlayerPort(&player)};
  reader.Reset(CurrentRun());
  PlayMp4({kUrl, CurrentRun(), PlayerPort(&player), reader, downloading_, start_position_});
  EXPECT_EQ(DumpText(PopQueuedFrames()), DumpText(ExpectedFrames(movie)));
}

TEST_F(Mp4PlayTest, ChecksForMoreBytesEveryMillisecond) {
  constexpr Clock::Duration kPace{1};
  const auto movie = MakeMovie();
  const Bytes stream = BuildMp4(movie).bytes;
  SimulatedClock clock;
  std::thread play([this] { Play(); });
  EXPECT_TRUE(StillPolls(clock, kPace));
  Write(stream, stream.size());
  clock.Advance(kPace);
  EXPECT_TRUE(clock.WaitForWaiters(1));
  EXPECT_EQ(Pushed(), movie.tracks[0].samples.size());
  EXPECT_THAT(player_.Snapshot().results, IsEmpty()) << "the download has not ended";
  *downloading_ = false;
  clock.Advance(kPace);
  play.join();
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 OK:http://host/a.mp4"));
}

TEST_F(Mp4PlayTest, OutcomeIsReportedAtAStopToo) {
  const auto file = BuildMp4(MakeMovie());
  Write(file.bytes, file.offsets[0][5]);
  std::thread play([this] { Play(); });
  EXPECT_TRUE(WaitUntil([] { return Pushed() == 5; }));
  g_mp4Running = false;
  play.join();
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 OK:http://host/a.mp4"));
}

TEST_F(Mp4PlayTest, OtherAddressEndsTheTaskWithoutALine) {
  const auto file = BuildMp4(MakeMovie());
  Write(file.bytes, file.offsets[0][5]);
  std::thread play([this] { Play(); });
  EXPECT_TRUE(WaitUntil([] { return Pushed() == 5; }));
  BeginAddress("restart.mp4");
  play.join();
  EXPECT_THAT(player_.Snapshot().results, IsEmpty());
}

TEST_F(Mp4PlayTest, LocalFileIsReadDirectly) {
  const auto movie = MakeMovie();
  const std::string url = "file://" + WriteLocalFile("local.mp4", BuildMp4(movie).bytes);
  *downloading_ = false;
  Play(url);
  EXPECT_EQ(DumpText(PopQueuedFrames()), DumpText(ExpectedFrames(movie)));
  EXPECT_EQ(Mp4MediaPath(url), url.substr(7));
  EXPECT_THAT(Mp4MediaPath(kUrl), testing::EndsWith("restart.mp4"));
}

}  // namespace
}  // namespace stream
