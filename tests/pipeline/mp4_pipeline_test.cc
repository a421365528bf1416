#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "mp4/mp4_downloader.h"
#include "tests/support/local_file.h"
#include "tests/support/mp4_play.h"

namespace stream {
namespace {

using mp4_boxes::VideoEntry;
using mp4_test::AudioTrack;
using mp4_test::Bytes;
using mp4_test::ExpectedFrames;
using mp4_test::MakeMovie;
using mp4_test::Movie;
using mp4_test::MovieOf;
using mp4_test::VideoTrack;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

using Mp4PipelineTest = Mp4PlayFixture;

TEST_F(Mp4PipelineTest, EveryFrameReachesThePlayerOnceAndInOrder) {
  ServeMovie(MakeMovie({.samples = 100, .key_interval = 25}));
  EXPECT_EQ(PlayToTheEnd(), Expected());
  const Record record = player_.Snapshot();
  EXPECT_EQ(record.video.size(), 100U);
  EXPECT_EQ(record.audio.size(), 100U);
  EXPECT_EQ(record.clocks.size(), 100U);
}

TEST_F(Mp4PipelineTest, IndexAfterTheDataPlaysToo) {
  Movie movie = MakeMovie({.samples = 100, .key_interval = 25});
  movie.index_first = false;
  ServeMovie(movie);
  EXPECT_EQ(PlayToTheEnd(), Expected());
}

TEST_F(Mp4PipelineTest, StatusLinesAreReportedInOrder) {
  ServeMovie(MakeMovie({.samples = 5}));
  const std::string url = server_.Address();
  PlayToTheEnd();
  const Record record = player_.Snapshot();
  EXPECT_THAT(record.messages,
              ElementsAre("PLAY MP4:" + url, "PLAY MP4 H264:" + url, "PLAY MP4 OK:" + url));
  EXPECT_THAT(record.results, ElementsAre("PLAY:MP4 OK:" + url));
  EXPECT_THAT(record.durations, ElementsAre(0.2F));
  EXPECT_THAT(record.buffered_times, ElementsAre(0, 0.04F, 0.08F, 0.12F, 0.16F));
}

TEST_F(Mp4PipelineTest, RequestHasARangeFromZeroAndAUserAgent) {
  ServeMovie(MakeMovie({.samples = 5}));
  PlayToTheEnd(server_.Url("/a.mp4?x&pt=android&"));
  ASSERT_THAT(server_.Requests(), SizeIs(1));
  EXPECT_EQ(server_.Requests()[0].range, "bytes=0-");
  EXPECT_THAT(server_.Requests()[0].user_agent,
              StartsWith("Mozilla/5.0 (Linux; U; Android 4.0.3;"));
}

TEST_F(Mp4PipelineTest, ConsoleLogsTheStreamTheEndOfEachTaskAndTheStop) {
  ServeMovie(MakeMovie({.samples = 5}));
  testing::internal::CaptureStdout();
  PlayToTheEnd();
  const std::string console = testing::internal::GetCapturedStdout();
  EXPECT_THAT(console,
              StartsWith("[DOWNLOAD]: " + server_.Address() + "\nmp4 Download thread stop.\n"));
  for (const char* line :
       {"mp4 EndDownload...\n", "mp4 video thread stop.\n", "mp4 audio thread stop.\n"}) {
    EXPECT_THAT(console, HasSubstr(line));
  }
  EXPECT_THAT(console, testing::EndsWith("mp4 video clear.\nmp4 audio clear.\n"));
}

TEST_F(Mp4PipelineTest, RestartFileHoldsTheDownloadedBytes) {
  ServeMovie(MakeMovie({.samples = 50, .video_size = 5000}));
  PlayToTheEnd();
  EXPECT_TRUE(RestartBytes() == file_.bytes);
}

TEST_F(Mp4PipelineTest, WithoutAPlayerFramesArePoppedAndReleased) {
  ServeMovie(MakeMovie());
  CStreamDownloader silent(nullptr);
  EXPECT_TRUE(silent.BeginDownload(server_.Address()));
  EXPECT_TRUE(WaitUntil([] {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->pushed == 50 && g_audioQueue->pushed == 50 && g_videoQueue->count == 0 &&
           g_audioQueue->count == 0;
  }));
  EXPECT_TRUE(silent.SetStartPostion(1));
  EXPECT_TRUE(silent.EndDownload());
}

TEST_F(Mp4PipelineTest, FirstHalfPlaysBeforeTheSecondIsReceived) {
  ServeMovie(MakeMovie());
  server_.Answer({{.until = Begin(25), .end = Mp4Reply::End::kGate}});
  downloader_.BeginDownload(server_.Address());
  EXPECT_TRUE(WaitForVideo(25) && WaitForAudio(25));
  server_.Release();
  EXPECT_TRUE(WaitForOutcome() && WaitForDelivery());
  Stop();
  EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), Expected());
}

TEST_F(Mp4PipelineTest, VideoAlonePlaysWhileItIsReceived) {
  ServeMovie(MovieOf({VideoTrack({.samples = 40})}));
  // Every sample is split between blocks.
  server_.Answer({{.piece = 50,
                   .pause = std::chrono::milliseconds(1),
                   .until = Begin(30) + 10,
                   .end = Mp4Reply::End::kGate}});
  downloader_.BeginDownload(server_.Address());
  EXPECT_TRUE(WaitForVideo(30));
  server_.Release();
  EXPECT_TRUE(WaitForOutcome() && WaitForDelivery());
  Stop();
  EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), Expected());
}

TEST_F(Mp4PipelineTest, VideoAfterTheEndOfTheAudioPlaysWhileItIsReceived) {
  ServeMovie(MovieOf({VideoTrack({.samples = 40}), AudioTrack({.samples = 3})}));
  const std::uint64_t in_a_sample = file_.offsets[0][30] + 10;
  server_.Answer({{.piece = 50,
                   .pause = std::chrono::milliseconds(1),
                   .until = static_cast<std::size_t>(in_a_sample),
                   .end = Mp4Reply::End::kGate}});
  downloader_.BeginDownload(server_.Address());
  EXPECT_TRUE(WaitForVideo(30));
  server_.Release();
  EXPECT_TRUE(WaitForOutcome() && WaitForDelivery());
  Stop();
  EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), Expected());
}

TEST_F(Mp4PipelineTest, MegabytePerSecondPlaysWhileItIsReceived) {
  ServeMovie(MakeMovie({.samples = 150, .video_size = 10'000, .audio_size = 400}));
  server_.Answer({{.piece = 10'000,
                   .pause = std::chrono::milliseconds(10),
                   .until = Begin(100),
                   .end = Mp4Reply::End::kGate}});
  downloader_.BeginDownload(server_.Address());
  ASSERT_TRUE(WaitForVideo(100));
  EXPECT_EQ(std::filesystem::file_size(RestartFile()), Begin(100));
  server_.Release();
  EXPECT_TRUE(WaitForOutcome() && WaitForDelivery());
  Stop();
  EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), Expected());
}

// The last pass starts after everything has been received, however soon that is.
TEST_F(Mp4PipelineTest, TailOfAFastDownloadIsNeverLost) {
  ServeMovie(MakeMovie({.samples = 3, .key_interval = 3}));
  for (int i = 0; i < 200; ++i) {
    StartAgain();
    ASSERT_EQ(PlayToTheEnd(server_.Url("/" + std::to_string(i) + ".mp4")), Expected())
        << "start " << i;
    ASSERT_THAT(player_.Snapshot().results.front(), StartsWith("PLAY:MP4 OK:"));
  }
}

TEST_F(Mp4PipelineTest, PositionOfTenSecondsDropsFramesPresentedBefore) {
  ServeMovie(MakeMovie({.samples = 260}));
  downloader_.BeginDownload("file:///no/such.mp4");  // creates the pipeline
  Stop();
  StartAgain();
  EXPECT_TRUE(downloader_.SetStartPostion(10));
  EXPECT_EQ(PlayToTheEnd(), Expected({.start_ms = 10'000}));
  EXPECT_THAT(player_.Snapshot().buffered_times, SizeIs(260));
}

TEST_F(Mp4PipelineTest, StopResetsThePosition) {
  ServeMovie(MakeMovie({.samples = 260}));
  downloader_.BeginDownload("file:///no/such.mp4");
  downloader_.SetStartPostion(10);
  Stop();
  StartAgain();
  EXPECT_EQ(PlayToTheEnd(), Expected());
}

TEST_F(Mp4PipelineTest, PositionIsReported) {
  downloader_.BeginDownload("file:///no/such.mp4");
  Stop();
  StartAgain();
  EXPECT_TRUE(downloader_.SetStartPostion(3725.5F));
  EXPECT_THAT(player_.Snapshot().messages,
              ElementsAre(testing::MatchesRegex("PLAY MP4 StartPostion:01:02:05\\.500 Q:.+s")));
}

// --- Movies other than one H.264 video track and one AAC audio track ---

TEST_F(Mp4PipelineTest, AudioAloneGivesNothing) {
  ServeMovie(MovieOf({AudioTrack()}));
  const std::string url = server_.Address();
  EXPECT_EQ(PlayToTheEnd(), "");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY MP4:" + url, "PLAY MP4 NO:" + url));
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 NO:" + url));
}

TEST_F(Mp4PipelineTest, VideoAlonePlays) {
  ServeMovie(MovieOf({VideoTrack()}));
  EXPECT_EQ(PlayToTheEnd(), Expected());
  EXPECT_THAT(player_.Snapshot().MessagesWith("PLAY MP4 H264:"), SizeIs(1));
}

TEST_F(Mp4PipelineTest, FirstOfTwoVideoTracksPlays) {
  Movie movie = MakeMovie();
  movie.tracks.push_back(VideoTrack({.video_size = 300}));
  movie.tracks.back().id = 3;
  ServeMovie(movie);
  EXPECT_EQ(PlayToTheEnd(), Expected());
}

class Mp4DamagedTracksTest : public Mp4PlayFixture, public testing::WithParamInterface<bool> {};

INSTANTIATE_TEST_SUITE_P(Index, Mp4DamagedTracksTest, testing::Bool(),
                         [](const auto& tested) { return tested.param ? "First" : "Last"; });

TEST_P(Mp4DamagedTracksTest, OtherTracksPlayDespiteDamageAndPadding) {
  const Movie movie = MakeMovie({.samples = 50, .key_interval = 25});
  Movie with = movie;
  with.index_first = GetParam();
  for (const std::uint32_t id : {8U, 9U}) {
    mp4_boxes::Track damaged = with.tracks.back();
    damaged.id = id;
    damaged.replaced[id == 8 ? "stsd" : "stco"] = Bytes();
    with.tracks.insert(with.tracks.begin(), damaged);
  }
  with.in_index = mp4_boxes::Zeros(8);
  ServeMovie(with);
  const std::string url = server_.Address();
  EXPECT_EQ(PlayToTheEnd(), DumpText(ExpectedFrames(movie)));
  EXPECT_THAT(player_.Snapshot().messages,
              ElementsAre("PLAY MP4:" + url, "PLAY MP4 H264:" + url, "PLAY MP4 OK:" + url));
}

TEST_F(Mp4PipelineTest, H265IsReportedOnceAndGivesNoFrame) {
  Movie movie = MakeMovie({.samples = 50, .video_size = 3000});
  movie.tracks[0].entry = VideoEntry("hvc1", mp4_boxes::Box("hvcC", Bytes(23)));
  ServeMovie(movie);
  server_.Answer({{.piece = 5000, .pause = std::chrono::milliseconds(1)}});
  const std::string url = server_.Address();
  EXPECT_EQ(PlayToTheEnd(), "");
  EXPECT_THAT(player_.Snapshot().messages,
              ElementsAre("PLAY MP4:" + url, "PLAY MP4 H265:" + url, "PLAY MP4 NO:" + url));
}

TEST_F(Mp4PipelineTest, VideoWithoutAKeyFrameGivesNothing) {
  Movie movie = MakeMovie();
  movie.tracks[0].samples.erase(movie.tracks[0].samples.begin());
  for (auto& sample : movie.tracks[0].samples) {
    sample.data = mp4_test::LengthPrefixed({mp4_test::Nal(mp4_test::kSlice)});
  }
  ServeMovie(movie);
  EXPECT_EQ(PlayToTheEnd(), "");
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 NO:" + server_.Address()));
}

// --- Downloads at different speeds ---

struct Speed {
  const char* name;
  Mp4Reply reply;
};

void PrintTo(const Speed& speed, std::ostream* out) { *out << speed.name; }

class Mp4SpeedTest : public Mp4PlayFixture,
                     public testing::WithParamInterface<std::tuple<Speed, bool>> {};

TEST_P(Mp4SpeedTest, GivesTheSameFrames) {
  const auto& [speed, index_first] = GetParam();
  Movie movie = MakeMovie({.samples = 60, .video_size = 700, .key_interval = 12});
  movie.index_first = index_first;
  ServeMovie(movie);
  server_.Answer({speed.reply});
  EXPECT_EQ(PlayToTheEnd(), Expected());
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 OK:" + server_.Address()));
}

constexpr std::chrono::microseconds kPause{500};

INSTANTIATE_TEST_SUITE_P(
    Speeds, Mp4SpeedTest,
    testing::Combine(
        testing::Values(Speed{"AllAtOnce", {}}, Speed{"AllAtOnceWithoutRanges", {.ranges = false}},
                        Speed{"BlocksOf17", {.piece = 17}},
                        Speed{"BlocksOf100WithPauses", {.piece = 100, .pause = kPause}},
                        Speed{"BlocksOf1000WithPauses", {.piece = 1000, .pause = 3 * kPause}},
                        Speed{"BlocksOf4096WithPauses", {.piece = 4096, .pause = 10 * kPause}},
                        Speed{"BlocksWithPausesWithoutRanges",
                              {.ranges = false, .piece = 1000, .pause = 3 * kPause}}),
        testing::Bool()),
    [](const auto& suite) {
      return std::string(std::get<0>(suite.param).name) +
             (std::get<1>(suite.param) ? "IndexFirst" : "IndexLast");
    });

class Mp4CutOffTest : public Mp4PlayFixture, public testing::WithParamInterface<int> {
 protected:
  // The movie with only the samples that are inside the first `size` bytes of the file.
  Movie CutOff(std::size_t size) const {
    Movie movie = movie_;
    for (std::size_t t = 0; t < movie.tracks.size(); ++t) {
      auto& samples = movie.tracks[t].samples;
      std::size_t whole = 0;
      while (whole < samples.size() && file_.offsets[t][whole] + samples[whole].data.size() <= size)
        ++whole;
      samples.resize(whole);
    }
    return movie;
  }
};

TEST_P(Mp4CutOffTest, PlaysUpToTheCut) {
  ServeMovie(MakeMovie({.samples = 60, .video_size = 700, .key_interval = 12}));
  const std::size_t size = file_.bytes.size() * static_cast<std::size_t>(GetParam()) / 10;
  server_.Answer({{.until = size}});
  const std::string outcome = size > Begin(1) ? "MP4 OK:" : "MP4 NO:";
  EXPECT_EQ(PlayToTheEnd(), DumpText(ExpectedFrames(CutOff(size))));
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:" + outcome + server_.Address()));
}

TEST_P(Mp4CutOffTest, PlaysNothingWithoutItsIndex) {
  Movie movie = MakeMovie({.samples = 60, .video_size = 700, .key_interval = 12});
  movie.index_first = false;
  ServeMovie(movie);
  server_.Answer({{.until = file_.bytes.size() * static_cast<std::size_t>(GetParam()) / 10}});
  EXPECT_EQ(PlayToTheEnd(), GetParam() == 10 ? Expected() : "");
}

INSTANTIATE_TEST_SUITE_P(Tenths, Mp4CutOffTest, testing::Range(0, 11),
                         [](const auto& suite) { return "At" + std::to_string(suite.param); });

// --- Bodies that are no movie ---

struct Body {
  const char* name;
  std::string bytes;
};

void PrintTo(const Body& body, std::ostream* out) { *out << body.name; }

class Mp4BodyTest : public Mp4PlayFixture, public testing::WithParamInterface<Body> {};

TEST_P(Mp4BodyTest, IsReportedOnceAndGivesNoFrame) {
  server_.Serve(Bytes(GetParam().bytes.begin(), GetParam().bytes.end()));
  const std::string url = server_.Address();
  EXPECT_EQ(PlayToTheEnd(), "");
  const Record record = player_.Snapshot();
  EXPECT_THAT(record.messages, ElementsAre("PLAY MP4:" + url, "PLAY MP4 NO:" + url));
  EXPECT_THAT(record.results, ElementsAre("PLAY:MP4 NO:" + url));
  EXPECT_THAT(record.durations, IsEmpty());
}

std::string IndexAlone(std::size_t less) {
  const auto file = mp4_test::BuildMp4(MakeMovie());
  const auto end = static_cast<std::ptrdiff_t>(file.index_end - less);
  return {file.bytes.begin(), file.bytes.begin() + end};
}

INSTANTIATE_TEST_SUITE_P(
    Bodies, Mp4BodyTest,
    testing::Values(Body{"Empty", ""}, Body{"ShortHtmlPage", "<html><body>404</body></html>"},
                    Body{"LongHtmlPage", "<html>" + std::string(1'000'000, '.')},
                    Body{"TextPage", "no such page"}, Body{"Zeros", std::string(50'000, '\0')},
                    Body{"Ones", std::string(50'000, '\xFF')},
                    Body{"Garbage", std::string(200'000, 'm')},
                    Body{"FileTypeAlone", std::string("\0\0\0\x10"
                                                      "ftypisom\0\0\0\0",
                                                      16)},
                    Body{"IndexWithoutItsLastByte", IndexAlone(1)}),
    [](const auto& suite) { return suite.param.name; });

TEST_F(Mp4PipelineTest, HtmlPageIsRefusedAtItsFirstBlockAndNotWritten) {
  const std::string page = "<html>" + std::string(5'000'000, '.');
  server_.Serve(Bytes(page.begin(), page.end()));
  testing::internal::CaptureStdout();
  PlayToTheEnd();
  EXPECT_THAT(testing::internal::GetCapturedStdout(), Not(HasSubstr("[DOWNLOAD]")));
  EXPECT_EQ(std::filesystem::file_size(RestartFile()), 0U);
}

TEST_F(Mp4PipelineTest, ErrorPageIsTreatedAsTheStream) {
  server_.Answer({{.status = 404, .page = "no such page"}});
  EXPECT_EQ(PlayToTheEnd(), "");
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 NO:" + server_.Address()));
}

TEST_F(Mp4PipelineTest, RefusedConnectionIsReported) {
  std::string url;
  {
    const Mp4Server gone;
    url = gone.Address();
  }
  EXPECT_EQ(PlayToTheEnd(url), "");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY MP4:" + url, "PLAY MP4 NO:" + url));
}

// --- Local files ---

class Mp4LocalFileTest : public Mp4PlayFixture {
 protected:
  std::string Write(const Movie& movie) {
    movie_ = movie;
    file_ = mp4_test::BuildMp4(movie);
    return "file://" + WriteLocalFile("local.mp4", file_.bytes);
  }
};

TEST_F(Mp4LocalFileTest, PlaysOnce) {
  const std::string url = Write(MakeMovie({.samples = 200, .video_size = 3000}));
  EXPECT_EQ(PlayToTheEnd(url), Expected());
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 OK:" + url));
}

TEST_F(Mp4LocalFileTest, IsMarkedAsDownloadedWhole) {
  PlayToTheEnd(Write(MakeMovie({.samples = 5})));
  const std::lock_guard lock(g_mp4File->mutex);
  EXPECT_TRUE(g_mp4File->ranges.First().Contains(0, 999'999'999));
  EXPECT_FALSE(g_mp4File->ranges.First().Contains(0, 1'000'000'000));
}

TEST_F(Mp4LocalFileTest, IsReadInsteadOfTheRestartFile) {
  // Only the transfer decodes "%61" as a letter, so the download succeeds but there is no file to
  // read.
  std::string url = Write(MakeMovie({.samples = 5}));
  url.replace(url.rfind("local"), 5, "loc%61l");
  EXPECT_EQ(PlayToTheEnd(url), "");
  // Here only the reader finds the file, because the transfer decodes the name.
  StartAgain();
  url = "file://" + WriteLocalFile("odd%61.mp4", file_.bytes);
  EXPECT_EQ(PlayToTheEnd(url), Expected());
}

TEST_F(Mp4LocalFileTest, IsNotChanged) {
  const std::string url = Write(MakeMovie({.samples = 50, .video_size = 5000}));
  const auto path = std::filesystem::path(url.substr(7));
  std::filesystem::permissions(path, std::filesystem::perms::owner_read);
  const auto time = std::filesystem::last_write_time(path);
  EXPECT_EQ(PlayToTheEnd(url), Expected());
  EXPECT_EQ(std::filesystem::file_size(path), file_.bytes.size());
  EXPECT_EQ(std::filesystem::last_write_time(path), time);
  std::filesystem::permissions(path, std::filesystem::perms::owner_all);
}

TEST_F(Mp4LocalFileTest, MissingFileIsReported) {
  const std::string url = "file:///no/such/file.mp4";
  EXPECT_EQ(PlayToTheEnd(url), "");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY MP4:" + url, "PLAY MP4 NO:" + url));
}

TEST_F(Mp4LocalFileTest, EmptyFileIsReported) {
  const std::string url = "file://" + WriteLocalFile("local.mp4", {});
  EXPECT_EQ(PlayToTheEnd(url), "");
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:MP4 NO:" + url));
}

TEST_F(Mp4LocalFileTest, PlaysFromAPositionInASecondStart) {
  const std::string url = Write(MakeMovie({.samples = 200}));
  EXPECT_EQ(PlayToTheEnd(url), Expected());
  StartAgain();
  EXPECT_TRUE(downloader_.SetStartPostion(4));
  EXPECT_EQ(PlayToTheEnd(url), Expected({100, 100}));
}

}  // namespace
}  // namespace stream
