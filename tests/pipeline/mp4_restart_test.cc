// Restarts with the same address: received bytes are kept, and only the rest is requested.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <vector>

#include "mp4/mp4_downloader.h"
#include "tests/support/blocked_temp_folder.h"
#include "tests/support/mp4_play.h"
#include "tests/support/simulated_clock.h"

namespace stream {
namespace {

using mp4_test::Bytes;
using mp4_test::ExpectedFrames;
using mp4_test::From;
using mp4_test::MakeMovie;
using mp4_test::Movie;
using mp4_test::MovieOf;
using mp4_test::VideoTrack;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;

std::string RangeFrom(std::uint64_t offset) { return "bytes=" + std::to_string(offset) + "-"; }

class Mp4RestartTest : public Mp4PlayFixture {
 protected:
  Mp4RestartTest() {
    ServeMovie(MakeMovie({.samples = 100, .video_size = 900, .audio_size = 100}));
  }

  static std::map<std::uint64_t, std::uint64_t> Ranges() {
    const std::lock_guard lock(g_mp4File->mutex);
    return g_mp4File->ranges.All();
  }

  // Plays a first start that is stopped when it has all samples before number kPart and some bytes
  // of the next one. The server must answer it with FirstPart.
  static constexpr std::size_t kPart = 40;
  std::size_t PartEnd() const { return Begin(kPart) + 300; }
  Mp4Reply FirstPart() const { return {.until = PartEnd(), .end = Mp4Reply::End::kStall}; }
  void PlayFirstPart() {
    downloader_.BeginDownload(server_.Address());
    EXPECT_TRUE(WaitForBytes(PartEnd()));
    EXPECT_TRUE(WaitForVideo(kPart) && WaitForAudio(kPart));
    EXPECT_TRUE(Stop());
    Movie part = movie_;
    for (auto& track : part.tracks) track.samples.resize(kPart);
    EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), DumpText(ExpectedFrames(part)));
    StartAgain();
  }

  void ExpectWholeFile() const {
    EXPECT_TRUE(RestartBytes() == file_.bytes);
    EXPECT_THAT(Ranges(), ElementsAre(Pair(0, file_.bytes.size())));
  }
};

TEST_F(Mp4RestartTest, StopInMidDownloadLosesAndRepeatsNothing) {
  server_.Answer({FirstPart(), {}});
  PlayFirstPart();
  EXPECT_EQ(PlayToTheEnd(), Expected({kPart, kPart}));
  EXPECT_THAT(server_.Ranges(), ElementsAre("bytes=0-", RangeFrom(PartEnd())));
  ExpectWholeFile();
}

TEST_F(Mp4RestartTest, SameAddressIsReported) {
  server_.Answer({FirstPart(), {}});
  PlayFirstPart();
  const std::string url = server_.Address();
  PlayToTheEnd();
  EXPECT_THAT(player_.Snapshot().messages,
              ElementsAre("PLAY MP4:" + url, "PLAY MP4 RE:" + url, "PLAY MP4 OK:" + url));
}

TEST_F(Mp4RestartTest, StopBetweenKeyFramesContinuesAtTheNextKeyFrame) {
  ServeMovie(MakeMovie({.samples = 100, .video_size = 900, .audio_size = 100, .key_interval = 25}));
  server_.Answer({FirstPart(), {}});
  PlayFirstPart();
  // Samples 40 to 49 are skipped: no key frame has been queued in this start when they are read.
  EXPECT_EQ(PlayToTheEnd(), Expected({kPart, kPart}));
  EXPECT_EQ(player_.Snapshot().video.at(0).pts, 50U * 40 * 90);
}

// A stop loses the frames that were queued and not delivered, and no others.
TEST_F(Mp4RestartTest, StopAtAnyTimeLosesOnlyQueuedFrames) {
  std::mt19937 random(1);  // NOLINT: the same run every time
  server_.Answer({{.piece = 700, .pause = std::chrono::microseconds(200)}});
  for (int i = 0; i < 10; ++i) {
    SCOPED_TRACE(i);
    StartAgain();
    const std::string url = server_.Url("/" + std::to_string(i) + ".mp4");
    downloader_.BeginDownload(url);
    EXPECT_TRUE(WaitForBytes(random() % file_.bytes.size()));
    Stop();
    From from;
    {
      const std::lock_guard lock(g_frameQueueMutex);
      from = {static_cast<std::size_t>(g_videoQueue->pushed),
              static_cast<std::size_t>(g_audioQueue->pushed)};
    }
    const auto before = DumpOf(player_.Snapshot());
    FrameDump expected = ExpectedFrames(movie_);
    ASSERT_LE(before.video.size(), from.video);
    ASSERT_LE(before.audio.size(), from.audio);
    expected.video.resize(before.video.size());
    expected.audio.resize(before.audio.size());
    EXPECT_EQ(DumpText(before), DumpText(expected));
    StartAgain();
    EXPECT_EQ(PlayToTheEnd(url), Expected(from));
    ExpectWholeFile();
  }
}

TEST_F(Mp4RestartTest, ManyStopsDuringTheDownloadGiveTheWholeFile) {
  server_.Answer({{.piece = 700, .pause = std::chrono::microseconds(300)}});
  std::vector<std::uint64_t> times;
  constexpr std::size_t kStops = 8;
  for (std::size_t i = 1; i <= kStops; ++i) {
    StartAgain();
    downloader_.BeginDownload(server_.Address());
    EXPECT_TRUE(server_.WaitForRequests(i));
    EXPECT_TRUE(WaitForBytes(file_.bytes.size() * i / (kStops + 1)));
    Stop();
    for (const auto& frame : player_.Snapshot().video) times.push_back(frame.pts);
  }
  StartAgain();
  PlayToTheEnd();
  for (const auto& frame : player_.Snapshot().video) times.push_back(frame.pts);
  EXPECT_TRUE(std::is_sorted(times.begin(), times.end()));
  EXPECT_EQ(std::adjacent_find(times.begin(), times.end()), times.end())
      << "a frame was delivered twice";
  ExpectWholeFile();
}

// --- Complete files ---

TEST_F(Mp4RestartTest, CompleteFileIsRequestedFromItsEndAndNothingIsWritten) {
  EXPECT_EQ(PlayToTheEnd(), Expected());
  const auto time = std::filesystem::last_write_time(RestartFile());
  StartAgain();
  EXPECT_EQ(PlayToTheEnd(), "");
  EXPECT_THAT(server_.Ranges(), ElementsAre("bytes=0-", RangeFrom(file_.bytes.size())));
  EXPECT_EQ(std::filesystem::last_write_time(RestartFile()), time);
  ExpectWholeFile();
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 NO:" + server_.Address()));
}

TEST_F(Mp4RestartTest, CompleteFileThatIsSentAgainIsNotWrittenAgain) {
  server_.Answer({{.ranges = false}});
  EXPECT_EQ(PlayToTheEnd(), Expected());
  const auto time = std::filesystem::last_write_time(RestartFile());
  const auto revision = [] {
    const std::lock_guard lock(g_mp4File->mutex);
    return g_mp4File->revision;
  };
  const std::uint64_t before = revision();
  StartAgain();
  EXPECT_EQ(PlayToTheEnd(), "");
  EXPECT_EQ(std::filesystem::last_write_time(RestartFile()), time);
  EXPECT_EQ(revision(), before);
  ExpectWholeFile();
}

// --- How servers answer the range ---

TEST_F(Mp4RestartTest, ServerThatSendsEverythingAgainLosesAndRepeatsNothing) {
  server_.Answer({FirstPart(), {.ranges = false}});
  PlayFirstPart();
  EXPECT_EQ(PlayToTheEnd(), Expected({kPart, kPart}));
  ExpectWholeFile();
}

TEST_F(Mp4RestartTest, ErrorPageIsNotWrittenIntoTheFile) {
  for (const int status : {400, 404, 416, 500, 503}) {
    SCOPED_TRACE(status);
    Mp4Server server;
    server.Serve(file_.bytes);
    server.Answer({{.until = PartEnd()}, {.status = status, .page = std::string(5000, 'e')}, {}});
    StartAgain();
    PlayToTheEnd(server.Address());
    StartAgain();
    EXPECT_EQ(PlayToTheEnd(server.Address()), "");
    EXPECT_THAT(Ranges(), ElementsAre(Pair(0, PartEnd())));
    StartAgain();
    EXPECT_EQ(PlayToTheEnd(server.Address()), Expected({kPart, kPart}));
    EXPECT_THAT(server.Ranges(),
                ElementsAre("bytes=0-", RangeFrom(PartEnd()), RangeFrom(PartEnd())));
    ExpectWholeFile();
  }
}

TEST_F(Mp4RestartTest, HtmlPageIsNotWrittenIntoTheFile) {
  server_.Answer({FirstPart(), {.status = 200, .page = "<html>" + std::string(5000, 'e')}, {}});
  PlayFirstPart();
  EXPECT_EQ(PlayToTheEnd(), "");
  EXPECT_THAT(Ranges(), ElementsAre(Pair(0, PartEnd())));
  StartAgain();
  EXPECT_EQ(PlayToTheEnd(), Expected({kPart, kPart}));
  ExpectWholeFile();
}

// --- Seeking ---

TEST_F(Mp4RestartTest, SeekBackInACompleteFilePlaysFromThereAndRequestsNoByteAgain) {
  PlayToTheEnd();
  StartAgain();
  downloader_.SetStartPostion(1.2F);
  EXPECT_EQ(PlayToTheEnd(), Expected({30, 30}));
  EXPECT_THAT(server_.Ranges(), ElementsAre("bytes=0-", RangeFrom(file_.bytes.size())));
}

TEST_F(Mp4RestartTest, SeekToTheBeginningOfACompleteFilePlaysItAgain) {
  PlayToTheEnd();
  StartAgain();
  downloader_.SetStartPostion(0);
  EXPECT_EQ(PlayToTheEnd(), Expected());
}

TEST_F(Mp4RestartTest, SeekBackInAPartialFileRequestsOnlyTheRest) {
  server_.Answer({FirstPart(), {}});
  PlayFirstPart();
  downloader_.SetStartPostion(0.4F);
  EXPECT_EQ(PlayToTheEnd(), Expected({10, 10}));
  EXPECT_THAT(server_.Ranges(), ElementsAre("bytes=0-", RangeFrom(PartEnd())));
  ExpectWholeFile();
}

TEST_F(Mp4RestartTest, SeekBackPlaysReceivedSamplesBeforeTheRestIsReceived) {
  server_.Answer({FirstPart(), {.silent = true}});
  PlayFirstPart();
  downloader_.SetStartPostion(0.4F);
  downloader_.BeginDownload(server_.Address());
  EXPECT_TRUE(WaitForVideo(kPart - 10) && WaitForAudio(kPart - 10))
      << "only " << player_.Snapshot().video.size() << " frames";
  Stop();
  EXPECT_EQ(player_.Snapshot().video.at(0).pts, 10U * 40 * 90);
}

TEST_F(Mp4RestartTest, SeekDuringPlaybackPlaysReceivedSamplesAgain) {
  server_.Answer({FirstPart()});
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForVideo(kPart) && WaitForAudio(kPart));
  downloader_.SetStartPostion(0.4F);
  EXPECT_TRUE(WaitForVideo(kPart + kPart - 10))
      << "only " << player_.Snapshot().video.size() << " frames";
  Stop();
}

// The running transfer continues at its offset and ends before the position of the seek.
TEST_F(Mp4RestartTest, SeekDuringATransferSetsTheRangeOfTheNextStart) {
  const std::size_t end = Begin(50);
  server_.Serve({file_.bytes.begin(), file_.bytes.begin() + static_cast<std::ptrdiff_t>(end)});
  server_.Answer({{.until = PartEnd(), .end = Mp4Reply::End::kGate}, {.status = 503}});
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForVideo(kPart) && WaitForAudio(kPart));
  downloader_.SetStartPostion(2.4F);
  server_.Release();
  EXPECT_TRUE(WaitForBytes(end));
  Stop();
  StartAgain();
  downloader_.BeginDownload(server_.Address());
  EXPECT_TRUE(server_.WaitForRequests(2));
  Stop();
  EXPECT_THAT(server_.Ranges(), ElementsAre("bytes=0-", RangeFrom(Begin(60))));
}

TEST_F(Mp4RestartTest, SeekForwardRequestsFromThereAndNothingPlaysAfterTheGap) {
  server_.Answer({FirstPart(), {}});
  PlayFirstPart();
  downloader_.SetStartPostion(2.4F);
  EXPECT_EQ(PlayToTheEnd(), "") << "only the first range counts";
  EXPECT_THAT(server_.Ranges(), ElementsAre("bytes=0-", RangeFrom(Begin(60))));
  EXPECT_THAT(Ranges(), testing::AllOf(testing::Contains(Pair(0, PartEnd())),
                                       testing::Contains(testing::Key(Begin(60)))));
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 NO:" + server_.Address()));
}

TEST_F(Mp4RestartTest, GapIsFilledAfterASeekBackAndEverythingPlays) {
  server_.Answer({FirstPart(), {}, {}});
  PlayFirstPart();
  downloader_.SetStartPostion(2.4F);
  PlayToTheEnd();
  StartAgain();
  downloader_.SetStartPostion(0.8F);
  EXPECT_EQ(PlayToTheEnd(), Expected({20, 20}));
  EXPECT_THAT(server_.Ranges(),
              ElementsAre("bytes=0-", RangeFrom(Begin(60)), RangeFrom(PartEnd())));
  ExpectWholeFile();
}

TEST_F(Mp4RestartTest, SamplesPresentedBeforeThePositionAreDroppedAfterASeek) {
  Movie movie = MakeMovie({.samples = 100});
  for (std::size_t i = 50; i < 55; ++i) movie.tracks[1].samples[i].composition = 0;
  for (auto& sample : movie.tracks[0].samples) sample.composition = 80;
  ServeMovie(movie);
  PlayToTheEnd();
  StartAgain();
  downloader_.SetStartPostion(2);
  EXPECT_EQ(PlayToTheEnd(), Expected({50, 50}));
}

TEST_F(Mp4RestartTest, SeekDuringTheDownloadWritesEveryByteAtItsOffset) {
  server_.Answer({{.piece = 997, .pause = std::chrono::microseconds(300)}});
  downloader_.BeginDownload(server_.Address());
  constexpr std::size_t kSeeks = 20;
  for (std::size_t i = 0; i < kSeeks; ++i) {
    EXPECT_TRUE(WaitForBytes(file_.bytes.size() * i / kSeeks));
    downloader_.SetStartPostion(static_cast<float>(i % 5));
  }
  EXPECT_TRUE(WaitForOutcome());
  Stop();
  ExpectWholeFile();
}

TEST_F(Mp4RestartTest, SeeksWhileOnlyVideoIsReadDoNotRace) {
  ServeMovie(MovieOf({VideoTrack({.samples = 100, .video_size = 900})}));
  server_.Answer({{.piece = 997, .pause = std::chrono::microseconds(300)}});
  downloader_.BeginDownload(server_.Address());
  const auto is_over = [](const Record& record) { return !record.results.empty(); };
  for (int i = 0; !is_over(player_.Snapshot()); ++i) {
    downloader_.SetStartPostion(static_cast<float>(i % 100) / 25);
  }
  Stop();
  ExpectWholeFile();
}

// --- Other addresses ---

TEST_F(Mp4RestartTest, OtherAddressEmptiesTheFileAndPlaysFromItsBeginning) {
  PlayToTheEnd();
  StartAgain();
  EXPECT_EQ(PlayToTheEnd(server_.Url("/b.mp4")), Expected());
  EXPECT_THAT(server_.Ranges(), ElementsAre("bytes=0-", "bytes=0-"));
  EXPECT_THAT(player_.Snapshot().MessagesWith("PLAY MP4 RE:"), IsEmpty());
  StartAgain();
  downloader_.BeginDownload("file:///no/such.mp4");
  Stop();
  EXPECT_EQ(std::filesystem::file_size(RestartFile()), 0U);
}

TEST_F(Mp4RestartTest, SecondFacadeInTheProcessPlaysAfterTheFirstIsGone) {
  {
    CStreamDownloader first(&player_);
    first.BeginDownload(server_.Address());
    ASSERT_TRUE(WaitForVideo(4));
  }
  player_.Forget();
  EXPECT_EQ(PlayToTheEnd(), Expected());
}

// --- Two facades that play in turn ---

class Mp4OtherFacadeTest : public Mp4RestartTest {
 protected:
  Mp4OtherFacadeTest() {
    other_server_.Serve(mp4_test::BuildMp4(other_movie_).bytes);
    other_server_.Answer({{.until = kOtherPart, .end = Mp4Reply::End::kStall}, {}});
  }

  // The first facade plays its whole address, then the other facade plays part of its own.
  void PlayInTurn() {
    EXPECT_EQ(PlayToTheEnd(), Expected());
    StartAgain();
    other_.BeginDownload(other_server_.Address());
    EXPECT_TRUE(WaitForBytes(kOtherPart));
    EXPECT_TRUE(other_.EndDownload());
    StartAgain();
  }

  static constexpr std::size_t kOtherPart = 40'000;

  Movie other_movie_ = MakeMovie({.samples = 100, .video_size = 700, .audio_size = 200});
  Mp4Server other_server_;
  CStreamDownloader other_{&player_};
};

TEST_F(Mp4OtherFacadeTest, SameAddressOnTheFirstFacadeStartsOver) {
  PlayInTurn();
  const std::string url = server_.Address();
  EXPECT_EQ(PlayToTheEnd(), Expected());
  EXPECT_THAT(server_.Ranges(), ElementsAre("bytes=0-", "bytes=0-"));
  EXPECT_THAT(player_.Snapshot().messages,
              ElementsAre("PLAY MP4:" + url, "PLAY MP4 RE:" + url, "PLAY MP4 H264:" + url,
                          "PLAY MP4 OK:" + url));
  ExpectWholeFile();
}

TEST_F(Mp4OtherFacadeTest, SameAddressOnTheSecondFacadeStartsOverAfterTheFirstPlayedAgain) {
  PlayInTurn();
  PlayToTheEnd();
  StartAgain();
  other_.BeginDownload(other_server_.Address());
  EXPECT_TRUE(WaitForOutcome() && WaitForDelivery());
  EXPECT_TRUE(other_.EndDownload());
  EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), DumpText(ExpectedFrames(other_movie_)));
  EXPECT_THAT(other_server_.Ranges(), ElementsAre("bytes=0-", "bytes=0-"));
}

TEST_F(Mp4OtherFacadeTest, PositionOfTheIdleFacadeDoesNotChangeTheFileOfTheOther) {
  PlayInTurn();
  downloader_.SetStartPostion(2.4F);
  EXPECT_THAT(player_.Snapshot().MessagesWith("PLAY MP4 StartPostion:00:00:02.400 Q:"),
              testing::SizeIs(1));
  other_.BeginDownload(other_server_.Address());
  EXPECT_TRUE(other_server_.WaitForRequests(2));
  EXPECT_TRUE(other_.EndDownload());
  EXPECT_THAT(other_server_.Ranges(), ElementsAre("bytes=0-", RangeFrom(kOtherPart)));
}

// --- A restart file that cannot be written ---

class Mp4BlockedFileTest : public Mp4RestartTest {
 protected:
  // A directory has the path of the file.
  Mp4BlockedFileTest() {
    std::filesystem::create_directories(GetTempDirA());
    std::filesystem::remove_all(RestartFile());
    std::filesystem::create_directory(RestartFile());
  }
  ~Mp4BlockedFileTest() override {
    downloader_.EndDownload();
    std::filesystem::remove_all(RestartFile());
  }
};

TEST_F(Mp4BlockedFileTest, BytesWaitUntilTheFileCanBeWritten) {
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(server_.WaitForRequests(1));
  std::filesystem::remove(RestartFile());
  std::ofstream(RestartFile()).close();
  EXPECT_TRUE(WaitForOutcome() && WaitForDelivery());
  Stop();
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), Expected());
  ExpectWholeFile();
}

// In simulated time all four tasks poll every millisecond. The download task polls for every block,
// and again once its transfer has ended. There are far fewer blocks than polls.
TEST_F(Mp4BlockedFileTest, BytesStillWaitOnceTheTransferHasFinished) {
  constexpr std::size_t kTasks = 4;
  constexpr int kLooks = 1'000;
  SimulatedClock clock;
  testing::internal::CaptureStdout();
  downloader_.BeginDownload(server_.Address());
  bool all_wait = true;
  for (int i = 0; all_wait && i < kLooks; ++i) {
    all_wait = clock.WaitForWaiters(kTasks);
    clock.Advance(Clock::Duration(1));
  }
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              testing::HasSubstr("mp4 Download thread stop.\n"));
  EXPECT_TRUE(all_wait) << "the download task has ended";
  EXPECT_THAT(player_.Snapshot().results, IsEmpty());
  clock.Release();
  std::filesystem::remove(RestartFile());
  std::ofstream(RestartFile()).close();
  EXPECT_TRUE(WaitForOutcome() && WaitForDelivery());
  Stop();
  EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), Expected());
}

TEST_F(Mp4BlockedFileTest, StopDoesNotWaitForTheFile) {
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(server_.WaitForRequests(1));
  EXPECT_TRUE(Stop());
  // Nothing is reported if the stop happened before a worker took the task that reads the movie.
  EXPECT_THAT(player_.Snapshot().results,
              testing::IsSubsetOf({"PLAY:MP4 NO:" + server_.Address()}));
}

// --- A directory that cannot be created ---

class Mp4BlockedFolderTest : public Mp4RestartTest {
 protected:
  Mp4BlockedFolderTest() { testing::internal::CaptureStdout(); }
  ~Mp4BlockedFolderTest() override {
    downloader_.EndDownload();
    std::cout << testing::internal::GetCapturedStdout();  // test failures are written there too
  }

  // The console output since the last call.
  static std::string Console() {
    std::string text = testing::internal::GetCapturedStdout();
    testing::internal::CaptureStdout();
    return text;
  }

  BlockedTempFolder folder_;
};

TEST_F(Mp4BlockedFolderTest, RestartFileIsInTheUsersCache) {
  EXPECT_EQ(PlayToTheEnd(), Expected());
  EXPECT_THAT(Console(), testing::StartsWith(folder_.Line()));
  EXPECT_EQ(RestartFile(), folder_.InCache() + "mebo.mp4");
  ExpectWholeFile();
  EXPECT_TRUE(folder_.IsBlocked());
}

// Even if the other directory can be created again, because the received bytes are in the cache.
TEST_F(Mp4BlockedFolderTest, SameAddressResumesInTheUsersCache) {
  server_.Answer({FirstPart(), {}});
  PlayFirstPart();
  Console();
  folder_.Unblock();
  EXPECT_EQ(PlayToTheEnd(), Expected({kPart, kPart}));
  EXPECT_THAT(server_.Ranges(), ElementsAre("bytes=0-", RangeFrom(PartEnd())));
  EXPECT_EQ(RestartFile(), folder_.InCache() + "mebo.mp4");
  ExpectWholeFile();
  EXPECT_FALSE(std::filesystem::exists(folder_.BesideExecutable()));
  EXPECT_THAT(Console(), testing::Not(testing::HasSubstr("Cache files")));
}

// --- A start without a stop ---

class Mp4SecondStartTest : public Mp4RestartTest {
 protected:
  // Expects every frame once. Their order is not checked, because two tasks may read the same file.
  void ExpectEveryFrameOnce() {
    const auto payloads = [](const std::vector<DumpedFrame>& frames) {
      std::vector<Bytes> all;
      all.reserve(frames.size());
      for (const DumpedFrame& frame : frames) all.push_back(frame.payload);
      std::sort(all.begin(), all.end());
      return all;
    };
    const FrameDump received = DumpOf(player_.Snapshot());
    const FrameDump expected = ExpectedFrames(movie_);
    EXPECT_EQ(received.video.size(), expected.video.size());
    EXPECT_EQ(received.audio.size(), expected.audio.size());
    EXPECT_TRUE(payloads(received.video) == payloads(expected.video));
    EXPECT_TRUE(payloads(received.audio) == payloads(expected.audio));
  }

  bool WaitForOutcomes(std::size_t count) {
    return player_.WaitFor(
        [count](const Record& record) { return record.results.size() >= count; });
  }
};

TEST_F(Mp4SecondStartTest, SameAddressRunsBesideTheFirst) {
  server_.Answer({FirstPart()});
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForVideo(kPart) && WaitForAudio(kPart));
  downloader_.BeginDownload(server_.Address());
  EXPECT_TRUE(server_.WaitForRequests(2)) << "the second download runs beside the first";
  EXPECT_TRUE(WaitForMessage("PLAY MP4 RE:" + server_.Address()));
  EXPECT_TRUE(Stop());
}

TEST_F(Mp4SecondStartTest, SameAddressTwiceAtOnceWritesEachByteAtItsOffset) {
  server_.Answer({{.piece = 1500, .pause = std::chrono::microseconds(300)}});
  downloader_.BeginDownload(server_.Address());
  downloader_.BeginDownload(server_.Address());
  EXPECT_TRUE(WaitForOutcomes(2) && WaitForDelivery());
  EXPECT_TRUE(Stop());
  EXPECT_TRUE(RestartBytes() == file_.bytes);
}

TEST_F(Mp4SecondStartTest, OtherAddressPlaysFullyBesideAStalledOne) {
  server_.Answer({FirstPart(), {}});
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForVideo(kPart) && WaitForAudio(kPart));
  player_.Forget();
  downloader_.BeginDownload(server_.Url("/b.mp4"));
  EXPECT_TRUE(WaitForVideo(100) && WaitForAudio(100));
  EXPECT_TRUE(WaitForDelivery());
  EXPECT_TRUE(Stop());
  ExpectEveryFrameOnce();
}

TEST_F(Mp4SecondStartTest, OtherAddressIsNotDamagedByOneThatKeepsRunning) {
  server_.Answer({{.piece = 500, .pause = std::chrono::microseconds(300)}});
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForVideo(3));
  downloader_.BeginDownload(server_.Url("/b.mp4"));
  EXPECT_TRUE(WaitForBytes(file_.bytes.size()));
  EXPECT_TRUE(Stop());
  ExpectWholeFile();
}

TEST_F(Mp4SecondStartTest, OneStopEndsTwoOtherAddressesEachTime) {
  server_.Answer({{.piece = 500, .pause = std::chrono::microseconds(300)}});
  for (int i = 0; i < 10; ++i) {
    StartAgain();
    downloader_.BeginDownload(server_.Url("/a" + std::to_string(i) + ".mp4"));
    downloader_.BeginDownload(server_.Url("/b" + std::to_string(i) + ".mp4"));
    EXPECT_TRUE(WaitForVideo(10));
    EXPECT_TRUE(Stop());
  }
  StartAgain();
  EXPECT_EQ(PlayToTheEnd(server_.Url("/last.mp4")), Expected())
      << "something of the earlier streams is left";
}

}  // namespace
}  // namespace stream
