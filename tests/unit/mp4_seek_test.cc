// Seeking in the track reader: the next samples of the tracks, and the file offset to download
// from.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "mp4/mp4_track_reader.h"
#include "tests/support/mp4_tasks.h"

namespace stream {
namespace {

using mp4_test::AudioTrack;
using mp4_test::BuildMp4;
using mp4_test::ExpectedFrames;
using mp4_test::MakeMovie;
using mp4_test::Movie;
using mp4_test::MovieOf;
using mp4_test::VideoTrack;
using testing::SizeIs;

class Mp4SeekTest : public Mp4Tasks {
 protected:
  void WriteMovie(const Movie& movie) {
    movie_ = movie;
    file_ = BuildMp4(movie);
    path_ = WriteLocalFile("movie.mp4", file_.bytes);
  }

  // The file offset of the first of the samples with this number, from which the file must be
  // downloaded.
  std::uint64_t Begin(std::size_t number) const {
    std::uint64_t begin = UINT64_MAX;
    for (const auto& of_track : file_.offsets) begin = std::min(begin, of_track[number]);
    return begin;
  }

  // The frames of the rest of the movie, starting with the samples of this number.
  std::string RestFrom(std::size_t number) const {
    return DumpText(ExpectedFrames(movie_, {number, number}));
  }
  std::string Rest() {
    StartAgain();
    return DumpText(Pass(Whole(path_)));
  }

  Movie movie_;
  mp4_boxes::File file_;
  std::string path_;
};

TEST_F(Mp4SeekTest, SeekWithinReadSamplesGoesBack) {
  WriteMovie(MakeMovie());
  Pass(Whole(path_));
  EXPECT_EQ(reader_.Seek(0.8F, path_), Begin(20));
  EXPECT_EQ(Rest(), RestFrom(20));
}

TEST_F(Mp4SeekTest, SeekBeyondReadSamplesScansTheIndex) {
  WriteMovie(MakeMovie());
  Pass(Part(path_, Begin(5)));
  EXPECT_EQ(reader_.Seek(1.2F, path_), Begin(30));
  EXPECT_EQ(Rest(), RestFrom(30));
}

TEST_F(Mp4SeekTest, ScannedSamplesAreKnownLater) {
  WriteMovie(MakeMovie());
  Pass(Part(path_, Begin(5)));
  reader_.Seek(1.2F, path_);
  reader_.Close();
  EXPECT_EQ(reader_.Seek(0.6F, "no/such/file.mp4"), Begin(15));
  EXPECT_EQ(reader_.Seek(0, "no/such/file.mp4"), Begin(0));
}

TEST_F(Mp4SeekTest, PositionBetweenTwoSamplesSelectsTheLaterOne) {
  WriteMovie(MakeMovie());
  Pass(Part(path_, Begin(5)));
  EXPECT_EQ(reader_.Seek(1.201F, path_), Begin(31));
  EXPECT_EQ(reader_.Seek(0.041F, path_), Begin(2));
}

TEST_F(Mp4SeekTest, PositionAfterTheEndSelectsTheLastSamples) {
  WriteMovie(MakeMovie());
  Pass(Part(path_, Begin(5)));
  EXPECT_EQ(reader_.Seek(1000, path_), Begin(49));
  EXPECT_EQ(Rest(), RestFrom(49));
}

TEST_F(Mp4SeekTest, PositionBeforeTheStartSelectsTheFirstSamples) {
  WriteMovie(MakeMovie());
  Pass(Whole(path_));
  EXPECT_EQ(reader_.Seek(-3, path_), Begin(0));
  EXPECT_EQ(Rest(), RestFrom(0));
}

TEST_F(Mp4SeekTest, NanOrInfinitePositionSelectsTheLastSamples) {
  WriteMovie(MakeMovie());
  Pass(Whole(path_));
  EXPECT_EQ(reader_.Seek(std::nanf(""), path_), Begin(49));
  EXPECT_EQ(reader_.Seek(std::numeric_limits<float>::infinity(), path_), Begin(49));
}

TEST_F(Mp4SeekTest, SeeksForwardAndBackAndForwardAgain) {
  WriteMovie(MakeMovie());
  Pass(Part(path_, Begin(1)));
  for (const std::size_t number : {40U, 3U, 45U, 0U, 20U}) {
    SCOPED_TRACE(number);
    EXPECT_EQ(reader_.Seek(static_cast<float>(number) * 0.04F - 0.001F, path_), Begin(number));
    EXPECT_EQ(Rest(), RestFrom(number));
  }
}

TEST_F(Mp4SeekTest, SeekWithoutAnIndexStaysAtTheStart) {
  WriteMovie(MakeMovie());
  EXPECT_EQ(reader_.Seek(1, "no/such/file.mp4"), 0U);
  EXPECT_EQ(Rest(), RestFrom(0));
}

TEST_F(Mp4SeekTest, SeekBeforeTheTracksAreFoundStaysAtTheStart) {
  WriteMovie(MakeMovie());
  EXPECT_EQ(reader_.Seek(1, path_), 0U);
  EXPECT_EQ(Rest(), RestFrom(0));
}

TEST_F(Mp4SeekTest, SeekBackInMidStreamMovesTheAudioBackToo) {
  WriteMovie(MakeMovie());
  Pass(Part(path_, Begin(5)));
  reader_.Seek(1.2F, path_);
  StartAgain();
  EXPECT_THAT(Pass(Whole(path_)).audio, SizeIs(20));
  reader_.Seek(0.4F, path_);
  const FrameDump dump = Pass(Whole(path_));
  EXPECT_EQ(dump.video.size(), 40U);
  EXPECT_EQ(dump.audio.size(), 40U);
}

// For such a track no time is recorded yet, so the search starts at its first sample.
TEST_F(Mp4SeekTest, SeekBeforeAnyAudioWasReadSkipsNoAudioSample) {
  WriteMovie(MakeMovie());
  Pass(Part(path_, Begin(0)));
  EXPECT_EQ(reader_.Seek(0, path_), Begin(0));
  EXPECT_EQ(Rest(), RestFrom(0));
}

TEST_F(Mp4SeekTest, SeekInAMissingFileStaysWithinKnownSamples) {
  WriteMovie(MakeMovie());
  Pass(Part(path_, Begin(5)));
  reader_.Close();
  // The times of the samples of number 5 are recorded, but their bytes are not received yet.
  EXPECT_EQ(reader_.Seek(1.2F, "no/such/file.mp4"), Begin(5));
  EXPECT_EQ(Rest(), RestFrom(5));
}

TEST_F(Mp4SeekTest, OffsetIsThatOfTheTrackThatStartsFirst) {
  Movie movie = MakeMovie();
  movie.tracks[0].samples_a_chunk = 7;
  movie.tracks[1].samples_a_chunk = 25;
  WriteMovie(movie);
  Pass(Whole(path_));
  for (const std::size_t number : {3U, 13U, 24U, 30U}) {
    EXPECT_EQ(reader_.Seek(static_cast<float>(number) * 0.04F - 0.001F, path_), Begin(number));
    EXPECT_EQ(Rest(), RestFrom(number));
  }
}

TEST_F(Mp4SeekTest, OffsetIsZeroWithoutAudio) {
  WriteMovie(MovieOf({VideoTrack()}));
  Pass(Whole(path_));
  EXPECT_EQ(reader_.Seek(0.8F, path_), 0U);
  EXPECT_EQ(Rest(), RestFrom(20));
}

TEST_F(Mp4SeekTest, OffsetIsZeroWithoutVideo) {
  WriteMovie(MovieOf({AudioTrack()}));
  Pass(Whole(path_));
  EXPECT_EQ(reader_.Seek(0.8F, path_), 0U);
}

TEST_F(Mp4SeekTest, SampleMissingBeforeTheSeekIsNotWaitedFor) {
  WriteMovie(MakeMovie());
  Pass(Part(path_, Begin(5)));
  reader_.Seek(0.08F, path_);
  EXPECT_THAT(Pass(Part(path_, Begin(5))).video, SizeIs(3));
}

// A small file that claims the largest possible number of samples, all of the same size and time.
TEST_F(Mp4SeekTest, SearchAmongBillionsOfClaimedSamplesEnds) {
  Movie movie = MakeMovie({.samples = 2});
  for (auto& track : movie.tracks) {
    track.replaced["stts"] =
        mp4_boxes::Table("stts", {mp4_test::Join({mp4_test::U32(UINT32_MAX), mp4_test::U32(0)})});
    track.replaced["stsz"] = mp4_boxes::FullBox(
        "stsz", 0, mp4_test::Join({mp4_test::U32(1), mp4_test::U32(UINT32_MAX)}));
    track.replaced["stsc"] = mp4_boxes::Table(
        "stsc", {mp4_test::Join({mp4_test::U32(1), mp4_test::U32(UINT32_MAX), mp4_test::U32(1)})});
  }
  WriteMovie(movie);
  Pass(Part(path_, file_.index_end));
  // Each sample has one byte, so the offset shows how many samples were searched. The search for
  // audio starts at the first sample, the search for video at the sample after the pass.
  const std::uint64_t video = file_.offsets[0][0] + Mp4TimeIndex::kMaxEntries;
  const std::uint64_t audio = file_.offsets[1][0] + Mp4TimeIndex::kMaxEntries - 1;
  EXPECT_EQ(reader_.Seek(5, path_), std::min(video, audio));
}

}  // namespace
}  // namespace stream
