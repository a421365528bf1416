#include "mp4/mp4_track_reader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/action_player.h"
#include "tests/support/mp4_tasks.h"

namespace stream {
namespace {

using mp4_boxes::AudioSampleEntry;
using mp4_boxes::AvcC;
using mp4_boxes::Esds;
using mp4_boxes::kPps;
using mp4_boxes::kSps;
using mp4_boxes::VideoEntry;
using mp4_test::AddStartCode;
using mp4_test::AudioTrack;
using mp4_test::BuildMp4;
using mp4_test::Bytes;
using mp4_test::ExpectedFrames;
using mp4_test::Filler;
using mp4_test::Join;
using mp4_test::LengthPrefixed;
using mp4_test::MakeMovie;
using mp4_test::Movie;
using mp4_test::MovieOf;
using mp4_test::Nal;
using mp4_test::ParameterSets;
using mp4_test::Track;
using mp4_test::VideoTrack;
using mp4_test::WithAdtsHeader;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr char kH264Line[] = "PLAY MP4 H264:http://host/a.mp4";

class Mp4TrackReaderTest : public Mp4Tasks {
 protected:
  // A movie in a file.
  struct MovieFile {
    mp4_boxes::File file;
    std::string path;

    std::uint64_t Video(std::size_t sample) const { return file.offsets[0][sample]; }
    std::uint64_t Audio(std::size_t sample) const { return file.offsets[1][sample]; }
  };
  static MovieFile WriteMovie(const Movie& movie) {
    mp4_boxes::File file = BuildMp4(movie);
    std::string path = WriteLocalFile("movie.mp4", file.bytes);
    return {std::move(file), std::move(path)};
  }

  // Truncates the file to its first `end` bytes, which are also all that is known to be received.
  Mp4TrackReader::Source UpTo(const MovieFile& movie_file, std::uint64_t end) {
    const auto size = static_cast<std::ptrdiff_t>(end);
    WriteLocalFile("movie.mp4",
                   {movie_file.file.bytes.begin(), movie_file.file.bytes.begin() + size});
    return Part(movie_file.path, end);
  }

  RecordingPlayer::Record Reported() const { return player_.Snapshot(); }
};

TEST_F(Mp4TrackReaderTest, WholeFileIsReadInOnePass) {
  const Movie movie = MakeMovie({.samples = 30, .key_interval = 10});
  EXPECT_EQ(DumpText(PassOver(movie)), DumpText(ExpectedFrames(movie)));
}

TEST_F(Mp4TrackReaderTest, DurationCodecAndBufferedTimesAreReportedInThisOrder) {
  Movie movie = MakeMovie({.samples = 3});
  movie.tracks[0].samples[1].composition = 80;
  movie.duration = 1234;
  PassOver(movie);
  EXPECT_THAT(Reported().durations, ElementsAre(1.234F));
  EXPECT_THAT(Reported().messages, ElementsAre(kH264Line));
  EXPECT_THAT(Reported().buffered_times, ElementsAre(0, 0.12F, 0.08F));
}

TEST_F(Mp4TrackReaderTest, SecondPassRepeatsNothing) {
  const Movie movie = MakeMovie();
  PassOver(movie);
  player_.Forget();
  EXPECT_EQ(DumpText(PassOver(movie)), "");
  EXPECT_THAT(Reported().messages, IsEmpty());
  EXPECT_THAT(Reported().durations, IsEmpty());
}

TEST_F(Mp4TrackReaderTest, VideoUnitsBeforeTheFirstIdrUnitAreDropped) {
  Movie movie = MakeMovie({.samples = 4, .key_interval = 100});
  movie.tracks[0].samples[0].data = LengthPrefixed({Nal(1, 8, 1)});
  movie.tracks[0].samples[1].data = LengthPrefixed({Nal(9, 2), Nal(1, 8, 2)});
  movie.tracks[0].samples[2].data = LengthPrefixed({Nal(1, 8, 3), Nal(5, 8, 4), Nal(1, 8, 5)});
  const FrameDump dump = PassOver(movie);
  ASSERT_EQ(dump.video.size(), 3U);
  EXPECT_EQ(dump.video[0].payload, Join({ParameterSets(), AddStartCode(Nal(5, 8, 4))}));
  EXPECT_EQ(dump.video[1].payload, AddStartCode(Nal(1, 8, 5)));
  EXPECT_EQ(dump.video[0].pts, 80U * 90);
  EXPECT_EQ(DumpText(dump), DumpText(ExpectedFrames(movie)));
  EXPECT_THAT(dump.audio, SizeIs(2)) << "audio before the video is dropped";
}

TEST_F(Mp4TrackReaderTest, AudioBeforeTheKeyFrameOfItsPassIsDropped) {
  Movie movie = MakeMovie({.samples = 6});
  for (std::size_t i = 0; i < 6; ++i) movie.tracks[1].samples[i].duration = 48 * 20;
  movie.tracks[0].samples[0].data = LengthPrefixed({Nal(1)});
  // The video begins at 40 ms, in the same turn as the audio sample at 20 ms.
  const FrameDump dump = PassOver(movie);
  ASSERT_THAT(dump.audio, SizeIs(4));
  EXPECT_EQ(dump.audio.front().pts, 40U * 90);
}

TEST_F(Mp4TrackReaderTest, AudioBeforeTheKeyFrameOfAnEarlierPassIsDroppedToo) {
  Movie movie = MakeMovie({.samples = 4});
  for (auto& sample : movie.tracks[1].samples) sample.duration = 48 * 20;
  movie.tracks[0].samples[0].data = LengthPrefixed({Nal(1)});
  const MovieFile movie_file = WriteMovie(movie);
  EXPECT_THAT(Pass(UpTo(movie_file, movie_file.Audio(1))).audio, IsEmpty());
  const auto audio = Pass(UpTo(movie_file, movie_file.file.bytes.size())).audio;
  ASSERT_THAT(audio, SizeIs(2));
  EXPECT_EQ(audio.front().pts, 40U * 90);
}

TEST_F(Mp4TrackReaderTest, KeyFrameOfAnEarlierStartDropsNoAudio) {
  const Movie movie = MakeMovie({.samples = 10});
  const MovieFile movie_file = WriteMovie(movie);
  reader_.RunPass(Part(movie_file.path, movie_file.Video(1)));
  reader_.Seek(0.2F, movie_file.path);
  StartAgain();
  EXPECT_THAT(Pass(Whole(movie_file.path)).audio, SizeIs(5));
  reader_.Seek(0, movie_file.path);
  StartAgain();
  EXPECT_THAT(Pass(Whole(movie_file.path)).audio, SizeIs(10));
}

// In the file the audio precedes its video.
TEST_F(Mp4TrackReaderTest, AudioIsNotReadBeforeItsVideo) {
  const Movie movie = MovieOf({AudioTrack({.samples = 5}), VideoTrack({.samples = 5})});
  const MovieFile movie_file = WriteMovie(movie);
  EXPECT_EQ(DumpText(Pass(UpTo(movie_file, movie_file.file.offsets[1][0]))), "");
  const FrameDump dump = Pass(UpTo(movie_file, movie_file.file.bytes.size()));
  EXPECT_THAT(dump.video, SizeIs(5));
  EXPECT_THAT(dump.audio, SizeIs(5));
}

TEST_F(Mp4TrackReaderTest, AacTrackOf44100HzHasIndexFour) {
  Movie movie = MakeMovie({.samples = 1});
  movie.tracks[1] = AudioTrack({.samples = 1}, 44100);
  EXPECT_EQ(PassOver(movie).audio.at(0).payload, WithAdtsHeader(Filler(30, 0), 4, 2));
}

TEST_F(Mp4TrackReaderTest, SbrTrackOf88200HzHasIndexFourToo) {
  Movie movie = MakeMovie({.samples = 1});
  movie.tracks[1] = AudioTrack({.samples = 1}, 88200);
  movie.tracks[1].entry = AudioSampleEntry("mp4a", 2, Esds(0x40, {0x2B, 0x91, 0x88, 0x00}));
  EXPECT_EQ(PassOver(movie).audio.at(0).payload, WithAdtsHeader(Filler(30, 0), 4, 2));
}

TEST_F(Mp4TrackReaderTest, PsTrackOf88200HzHasIndexFourToo) {
  Movie movie = MakeMovie({.samples = 1});
  movie.tracks[1] = AudioTrack({.samples = 1}, 88200);
  movie.tracks[1].entry = AudioSampleEntry("mp4a", 2, Esds(0x40, {0xEA, 0x09, 0x88, 0x00}));
  EXPECT_EQ(PassOver(movie).audio.at(0).payload, WithAdtsHeader(Filler(30, 0), 4, 1));
}

TEST_F(Mp4TrackReaderTest, TrackOf96000HzKeepsIndexZero) {
  Movie movie = MakeMovie({.samples = 1});
  movie.tracks[1] = AudioTrack({.samples = 1}, 96000);
  EXPECT_EQ(PassOver(movie).audio.at(0).payload, WithAdtsHeader(Filler(30, 0), 0, 2));
}

TEST_F(Mp4TrackReaderTest, UnmappedRateKeepsTheIndexOfThePreviousFile) {
  Movie movie = MakeMovie({.samples = 1});
  PassOver(movie);
  movie.tracks[1] = AudioTrack({.samples = 1}, 96000);
  StartAnother();
  EXPECT_EQ(PassOver(movie).audio.at(0).payload, WithAdtsHeader(Filler(30, 0), 3, 2));
}

TEST_F(Mp4TrackReaderTest, ChannelsAreThoseOfTheTrack) {
  Movie movie = MakeMovie({.samples = 1});
  movie.tracks[1].entry = AudioSampleEntry("mp4a", 2, Esds(0x40, {0x11, 0xB0}));
  EXPECT_EQ(PassOver(movie).audio.at(0).payload, WithAdtsHeader(Filler(30, 0), 3, 6));
}

TEST_F(Mp4TrackReaderTest, SamplesBeforeTheStartPositionAreReadAndReportedButNotQueued) {
  const Movie movie = MakeMovie({.samples = 260});  // 10.4 s
  const Mp4TrackReader::Source source = Whole(WriteMovie(movie).path);
  start_position_ = 10;
  EXPECT_EQ(DumpText(Pass(source)), DumpText(ExpectedFrames(movie, {.start_ms = 10'000})));
  EXPECT_THAT(Reported().buffered_times, SizeIs(260));
  EXPECT_EQ(DumpText(Pass(Whole(source.path))), "") << "the samples were read again";
}

TEST_F(Mp4TrackReaderTest, RenderingOffsetCountsForTheStartPosition) {
  Movie movie = MakeMovie({.samples = 3});
  for (auto& sample : movie.tracks[0].samples) sample.composition = 40;
  start_position_ = 0.08F;
  const FrameDump dump = PassOver(movie);
  ASSERT_THAT(dump.video, SizeIs(2));
  EXPECT_EQ(dump.video[0].pts, 40U * 90) << "presented at 80 ms";
  ASSERT_THAT(dump.audio, SizeIs(1));
  EXPECT_EQ(dump.audio[0].pts, 80U * 90);
}

// Both versions of the table, since many programs write negative offsets into either.
Movie WithOffsets(unsigned version, const std::vector<std::int32_t>& offsets) {
  Movie movie = MakeMovie({.samples = offsets.size()});
  movie.tracks[0].composition_version = version;
  for (std::size_t i = 0; i < offsets.size(); ++i)
    movie.tracks[0].samples[i].composition = offsets[i];
  return movie;
}

TEST_F(Mp4TrackReaderTest, NegativeOffsetsAreReportedAsEarlierTimes) {
  for (const unsigned version : {0U, 1U}) {
    StartAnother();
    player_.Forget();
    PassOver(WithOffsets(version, {0, 80, -40, -40, 40, -160}));
    EXPECT_THAT(Reported().buffered_times, ElementsAre(0, 0.12F, 0.04F, 0.08F, 0.2F, 0.04F));
  }
}

TEST_F(Mp4TrackReaderTest, TimeBelowZeroIsReportedAsZero) {
  for (const unsigned version : {0U, 1U}) {
    StartAnother();
    player_.Forget();
    const auto least = std::numeric_limits<std::int32_t>::min();
    EXPECT_THAT(PassOver(WithOffsets(version, {-1, -80, least, -80})).video, SizeIs(4));
    EXPECT_THAT(Reported().buffered_times, ElementsAre(0, 0, 0, 0.04F));
  }
}

TEST_F(Mp4TrackReaderTest, NegativeOffsetCountsForTheStartPosition) {
  for (const unsigned version : {0U, 1U}) {
    StartAnother();
    start_position_ = 0.08F;
    const FrameDump dump = PassOver(WithOffsets(version, {-40, -40, -40, -40, -40}));
    ASSERT_THAT(dump.video, SizeIs(2));
    EXPECT_EQ(dump.video[0].pts, 120U * 90) << "presented at 80 ms";
    EXPECT_EQ(dump.video[0].dts, 120U * 90);
  }
}

TEST_F(Mp4TrackReaderTest, SampleAcrossTheEndOfTheFirstRangeWaitsUntilTheRangeGrows) {
  const MovieFile movie_file = WriteMovie(MakeMovie({.samples = 3}));
  const std::uint64_t end = movie_file.Audio(1);  // the end of the second video sample
  EXPECT_THAT(Pass(Part(movie_file.path, end - 1)).video, SizeIs(1));
  EXPECT_THAT(Pass(Part(movie_file.path, end - 1)).video, IsEmpty());
  EXPECT_THAT(Pass(Part(movie_file.path, end)).video, SizeIs(1));
}

TEST_F(Mp4TrackReaderTest, SampleAcrossTheEndOfTheFileWaitsUntilTheFileGrows) {
  const MovieFile movie_file = WriteMovie(MakeMovie({.samples = 3}));
  const std::uint64_t end = movie_file.Audio(1);
  EXPECT_THAT(Pass(UpTo(movie_file, end - 1)).video, SizeIs(1));
  EXPECT_THAT(Pass(UpTo(movie_file, end)).video, SizeIs(1));
  EXPECT_THAT(Pass(UpTo(movie_file, end)).video, IsEmpty());
}

TEST_F(Mp4TrackReaderTest, EmptySampleIsAvailableAtTheEndOfTheRange) {
  Movie movie = MovieOf({VideoTrack({.samples = 3})});
  movie.tracks[0].samples[1].data.clear();
  const MovieFile movie_file = WriteMovie(movie);
  EXPECT_THAT(Pass(Part(movie_file.path, movie_file.Video(1))).video, SizeIs(1));
  EXPECT_THAT(Reported().buffered_times, ElementsAre(0, 0.04F));
  EXPECT_THAT(Pass(Whole(movie_file.path)).video, SizeIs(1));
}

TEST_F(Mp4TrackReaderTest, SampleInsideTheSecondRangeStaysUnavailable) {
  const MovieFile movie_file = WriteMovie(MakeMovie({.samples = 4}));
  DownloadedRanges ranges;
  ranges.Add(0, movie_file.Video(1));
  ranges.Add(movie_file.Video(1) + 1, movie_file.file.bytes.size());
  EXPECT_THAT(Pass(Between(movie_file.path, ranges.First())).video, SizeIs(1));
  EXPECT_THAT(Pass(Between(movie_file.path, ranges.First())).video, IsEmpty());
}

TEST_F(Mp4TrackReaderTest, SamplesBeforeTheFirstRangeStayUnavailable) {
  const MovieFile movie_file = WriteMovie(MakeMovie({.samples = 4}));
  EXPECT_THAT(
      Pass(Between(movie_file.path, {movie_file.Video(0) + 1, movie_file.file.bytes.size()})).video,
      IsEmpty());
}

// The frames do not depend on how the download is divided into passes.
TEST_F(Mp4TrackReaderTest, GrowingFileYieldsTheSameFramesInAnySteps) {
  const Movie movie = MakeMovie({.samples = 20, .key_interval = 5});
  const MovieFile movie_file = WriteMovie(movie);
  for (const std::size_t step : {13U, 50U, 97U, 1000U}) {
    SCOPED_TRACE("steps of " + std::to_string(step));
    StartAnother();
    for (std::size_t end = step; end < movie_file.file.bytes.size(); end += step) {
      reader_.RunPass(UpTo(movie_file, end));
    }
    reader_.RunPass(UpTo(movie_file, movie_file.file.bytes.size()));
    EXPECT_EQ(DumpText(PopQueuedFrames()), DumpText(ExpectedFrames(movie)));
  }
}

TEST_F(Mp4TrackReaderTest, IncompleteIndexIsIgnored) {
  const Movie movie = MakeMovie({.samples = 5});
  const MovieFile movie_file = WriteMovie(movie);
  EXPECT_EQ(DumpText(Pass(UpTo(movie_file, movie_file.file.index_end - 1))), "");
  EXPECT_THAT(Reported().messages, IsEmpty());
  EXPECT_THAT(Reported().durations, IsEmpty());
  EXPECT_EQ(DumpText(Pass(UpTo(movie_file, movie_file.file.bytes.size()))),
            DumpText(ExpectedFrames(movie)));
}

TEST_F(Mp4TrackReaderTest, IndexAfterTheDataIsReadOnceReceived) {
  Movie movie = MakeMovie({.samples = 5});
  movie.index_first = false;
  const MovieFile movie_file = WriteMovie(movie);
  EXPECT_EQ(DumpText(Pass(UpTo(movie_file, movie_file.file.index_begin))), "");
  EXPECT_EQ(DumpText(Pass(UpTo(movie_file, movie_file.file.index_end))),
            DumpText(ExpectedFrames(movie)));
}

TEST_F(Mp4TrackReaderTest, MissingFileAndEmptyFileYieldNothing) {
  EXPECT_EQ(DumpText(Pass(Whole("no/such/file.mp4"))), "");
  EXPECT_EQ(DumpText(Pass(Whole(WriteLocalFile("movie.mp4", {})))), "");
  EXPECT_THAT(Reported().messages, IsEmpty());
}

TEST_F(Mp4TrackReaderTest, SampleMissingInTheFileDoesNotBlockTheOtherTrack) {
  Movie movie = MakeMovie({.samples = 5});
  movie.tracks[0].samples_a_chunk = 3;
  movie.tracks[1].samples_a_chunk = 5;  // file order: v0 v1 v2 a0 ... a4 v3 v4
  MovieFile movie_file = WriteMovie(movie);
  UpTo(movie_file, movie_file.Video(3) + 1);
  const FrameDump dump =
      Pass(Whole(movie_file.path));  // the ranges claim more bytes than the file contains
  EXPECT_THAT(dump.video, SizeIs(3));
  EXPECT_THAT(dump.audio, SizeIs(5));
}

TEST_F(Mp4TrackReaderTest, VideoAloneIsReadAndItsDurationIsReportedInEveryPass) {
  const Movie movie = MovieOf({VideoTrack({.samples = 5})});
  EXPECT_EQ(DumpText(PassOver(movie)), DumpText(ExpectedFrames(movie)));
  PassOver(movie);
  EXPECT_THAT(Reported().durations, ElementsAre(0.2F, 0.2F));
  EXPECT_THAT(Reported().messages, ElementsAre(kH264Line));
}

TEST_F(Mp4TrackReaderTest, AudioAloneIsReadAndNeverQueued) {
  EXPECT_EQ(DumpText(PassOver(MovieOf({AudioTrack({.samples = 5})}))), "");
  EXPECT_THAT(Reported().messages, IsEmpty());
  EXPECT_THAT(Reported().durations, SizeIs(1));
  EXPECT_THAT(Reported().buffered_times, IsEmpty());
}

TEST_F(Mp4TrackReaderTest, FileWithoutTracksReportsOnlyItsDuration) {
  EXPECT_EQ(DumpText(PassOver(MovieOf({}))), "");
  EXPECT_THAT(Reported().messages, IsEmpty());
  EXPECT_THAT(Reported().durations, SizeIs(1));
}

TEST_F(Mp4TrackReaderTest, H265IsReportedOnceAndRefusedInEveryPass) {
  Movie movie = MakeMovie({.samples = 5});
  movie.tracks[0].entry = VideoEntry("hvc1", mp4_boxes::Box("hvcC", Bytes(23)));
  for (int pass = 0; pass < 3; ++pass) EXPECT_EQ(DumpText(PassOver(movie)), "");
  EXPECT_THAT(Reported().messages, ElementsAre("PLAY MP4 H265:http://host/a.mp4"));
  EXPECT_THAT(Reported().buffered_times, IsEmpty());
}

TEST_F(Mp4TrackReaderTest, OtherCodecsAreReportedByTheNameOfTheirSampleEntry) {
  Movie movie = MakeMovie({.samples = 5});
  movie.tracks[0].entry = VideoEntry("mp4v", {});
  EXPECT_EQ(DumpText(PassOver(movie)), "");
  EXPECT_THAT(Reported().messages, ElementsAre("PLAY MP4 mp4v:http://host/a.mp4"));
}

// `movie` with a track before its own tracks that cannot be played.
Movie WithTrackBefore(Track damaged, const Movie& movie) {
  Movie with = movie;
  damaged.id = 9;
  with.tracks.insert(with.tracks.begin(), std::move(damaged));
  return with;
}

TEST_F(Mp4TrackReaderTest, DamagedTracksDoNotHideTheOthers) {
  const Movie movie = MakeMovie({.samples = 20, .key_interval = 5});
  for (const char* const type : {"stsd", "stts", "stsc", "stsz", "stco"}) {
    for (const Track& track : movie.tracks) {
      SCOPED_TRACE(track.handler + " without " + type);
      Track damaged = track;
      damaged.replaced[type] = Bytes();
      StartAnother();
      player_.Forget();
      EXPECT_EQ(DumpText(PassOver(WithTrackBefore(damaged, movie))),
                DumpText(ExpectedFrames(movie)));
      EXPECT_THAT(Reported().messages, ElementsAre(kH264Line));
    }
  }
}

TEST_F(Mp4TrackReaderTest, TracksWithoutTimeScaleOrSamplesDoNotHideTheOthers) {
  const Movie movie = MakeMovie({.samples = 20, .key_interval = 5});
  for (const Track& track : movie.tracks) {
    Track timeless = track;
    timeless.time_scale = 0;
    StartAnother();
    EXPECT_EQ(DumpText(PassOver(WithTrackBefore(timeless, movie))),
              DumpText(ExpectedFrames(movie)));
    Track empty = track;
    empty.samples.clear();
    StartAnother();
    EXPECT_EQ(DumpText(PassOver(WithTrackBefore(empty, movie))), DumpText(ExpectedFrames(movie)));
  }
}

TEST_F(Mp4TrackReaderTest, VideoPlaysBesideADamagedAudioTrack) {
  Movie movie = MakeMovie({.samples = 20});
  movie.tracks[1].replaced["stsd"] = Bytes();
  const Movie video_alone = MovieOf({movie.tracks[0]});
  EXPECT_EQ(DumpText(PassOver(movie)), DumpText(ExpectedFrames(video_alone)));
  EXPECT_THAT(Reported().messages, ElementsAre(kH264Line));
}

TEST_F(Mp4TrackReaderTest, DamagedVideoTrackIsNotReported) {
  Movie movie = MakeMovie({.samples = 20});
  movie.tracks[0].replaced["stsd"] = Bytes();
  EXPECT_EQ(DumpText(PassOver(movie)), "");
  EXPECT_THAT(Reported().messages, IsEmpty());
  EXPECT_THAT(Reported().durations, SizeIs(1));
}

TEST_F(Mp4TrackReaderTest, H265IsRefusedEvenIfAnH264TrackFollows) {
  const Movie movie = MakeMovie({.samples = 5});
  Track other = movie.tracks[0];
  other.entry = VideoEntry("hvc1", mp4_boxes::Box("hvcC", Bytes(23)));
  EXPECT_EQ(DumpText(PassOver(WithTrackBefore(other, movie))), "");
  EXPECT_THAT(Reported().messages, ElementsAre("PLAY MP4 H265:http://host/a.mp4"));
}

TEST_F(Mp4TrackReaderTest, PaddedIndexPlays) {
  Movie movie = MakeMovie({.samples = 20, .key_interval = 5});
  movie.tracks[0].padding["trak"] = 12;
  movie.in_index = mp4_boxes::Zeros(4);
  EXPECT_EQ(DumpText(PassOver(movie)), DumpText(ExpectedFrames(movie)));
}

TEST_F(Mp4TrackReaderTest, TracksWithTypesInCapitalsPlay) {
  Movie movie = MakeMovie({.samples = 5});
  movie.tracks[0].handler = "ViDE";
  movie.tracks[1].handler = "SOUN";
  EXPECT_EQ(DumpText(PassOver(movie)), DumpText(ExpectedFrames(movie)));
  EXPECT_THAT(Reported().messages, ElementsAre(kH264Line));
}

TEST_F(Mp4TrackReaderTest, FirstOfTwoVideoTracksPlays) {
  Movie movie = MakeMovie({.samples = 5});
  Track second = VideoTrack({.samples = 5, .video_size = 500});
  second.id = 3;
  movie.tracks.push_back(second);
  EXPECT_EQ(DumpText(PassOver(movie)), DumpText(ExpectedFrames(movie)));
  EXPECT_THAT(Reported().messages, ElementsAre(kH264Line));
}

TEST_F(Mp4TrackReaderTest, TracksOfDifferentLengthsAreReadToTheirEnds) {
  const FrameDump short_audio =
      PassOver(MovieOf({VideoTrack({.samples = 9}), AudioTrack({.samples = 4})}));
  EXPECT_THAT(short_audio.video, SizeIs(9));
  EXPECT_THAT(short_audio.audio, SizeIs(4));
  StartAnother();
  const FrameDump short_video =
      PassOver(MovieOf({VideoTrack({.samples = 4}), AudioTrack({.samples = 9})}));
  EXPECT_THAT(short_video.video, SizeIs(4));
  EXPECT_THAT(short_video.audio, SizeIs(9));
}

TEST_F(Mp4TrackReaderTest, LastParameterSetsOfTheListAreUsed) {
  const Bytes sps = {0x67, 9, 9};
  const Bytes pps = {0x68, 8};
  Movie movie = MakeMovie({.samples = 1});
  movie.tracks[0].entry = VideoEntry("avc1", AvcC({kSps, sps}, {kPps, pps}));
  EXPECT_EQ(PassOver(movie).video.at(0).payload,
            Join({AddStartCode(sps), AddStartCode(pps), AddStartCode(Nal(5, 60, 0))}));
}

TEST_F(Mp4TrackReaderTest, ParameterSetsOfTheNextFileReplaceThoseOfTheFirst) {
  Movie movie = MakeMovie({.samples = 1});
  PassOver(movie);
  const Bytes sps = {0x67, 9, 9};
  movie.tracks[0].entry = VideoEntry("avc1", AvcC({sps}, {}));
  StartAnother();
  EXPECT_EQ(PassOver(movie).video.at(0).payload,
            Join({AddStartCode(sps), AddStartCode(kPps), AddStartCode(Nal(5, 60, 0))}))
      << "the file has no picture parameter set of its own";
}

TEST_F(Mp4TrackReaderTest, FileAfterAResetPlaysFromItsStart) {
  const Movie movie = MakeMovie({.samples = 5});
  PassOver(movie);
  StartAnother();
  EXPECT_EQ(DumpText(PassOver(movie)), DumpText(ExpectedFrames(movie)));
}

TEST_F(Mp4TrackReaderTest, PassEndsWhenThePipelineStops) {
  g_mp4Running = false;
  EXPECT_EQ(DumpText(PassOver(MakeMovie())), "");
  g_mp4Running = true;
  EXPECT_EQ(DumpText(PassOver(MakeMovie())), DumpText(ExpectedFrames(MakeMovie())));
}

TEST_F(Mp4TrackReaderTest, ClosedFileIsOpenedAgain) {
  const Movie movie = MakeMovie({.samples = 5});
  const MovieFile movie_file = WriteMovie(movie);
  EXPECT_THAT(Pass(Part(movie_file.path, movie_file.Video(2))).video, SizeIs(2));
  reader_.Close();
  EXPECT_THAT(Pass(Whole(movie_file.path)).video, SizeIs(3));
}

TEST_F(Mp4TrackReaderTest, PassForAnotherAddressReadsNothing) {
  const Movie movie = MakeMovie({.samples = 5});
  Mp4TrackReader::Source stale = Whole(WriteMovie(movie).path);
  stale.run = RunId{7};
  EXPECT_EQ(DumpText(Pass(stale)), "");
  EXPECT_THAT(Reported().durations, IsEmpty());
  reader_.Reset(RunId{7});
  EXPECT_EQ(DumpText(Pass(stale)), DumpText(ExpectedFrames(movie)));
}

class Mp4RunningPassTest : public Mp4TrackReaderTest {
 protected:
  ActionPlayer action_player_;
  Mp4TrackReader reader_{PlayerPort(&action_player_)};
};

TEST_F(Mp4RunningPassTest, SecondPassAtTheSameTimeIsRefused) {
  const Movie movie = MakeMovie({.samples = 5});
  const auto source = Whole(WriteMovie(movie).path);
  bool pass_done = true;
  action_player_.once = [&] { pass_done = reader_.RunPass(source); };
  EXPECT_TRUE(reader_.RunPass(source));
  EXPECT_FALSE(pass_done);
  EXPECT_EQ(DumpText(PopQueuedFrames()), DumpText(ExpectedFrames(movie)));
  EXPECT_TRUE(reader_.RunPass(source)) << "a later pass is not refused";
}

TEST_F(Mp4RunningPassTest, SeekDuringThePassContinuesFromThere) {
  const MovieFile movie_file = WriteMovie(MakeMovie({.samples = 50}));
  const auto source = Whole(movie_file.path);
  reader_.RunPass(Part(movie_file.path, movie_file.Video(0)));
  action_player_.once = [&] { reader_.Seek(1.2F, movie_file.path); };
  reader_.RunPass(source);
  EXPECT_TRUE(reader_.MayFindMore(source));
  const auto video = PopQueuedFrames().video;
  ASSERT_THAT(video, SizeIs(21)) << "the current sample, and those from 30 on";
  EXPECT_EQ(video[1].pts, 1200U * 90);
}

TEST_F(Mp4RunningPassTest, OtherAddressEndsThePass) {
  const auto source = Whole(WriteMovie(MakeMovie()).path);
  action_player_.once = [&] { reader_.Reset(RunId{1}); };
  reader_.RunPass(source);
  EXPECT_THAT(PopQueuedFrames().video, SizeIs(1)) << "the current sample";
}

TEST_F(Mp4RunningPassTest, StopEndsThePassAfterTheCurrentSample) {
  const auto source = Whole(WriteMovie(MakeMovie()).path);
  action_player_.once = [] { g_mp4Running = false; };
  reader_.RunPass(source);
  const FrameDump dump = PopQueuedFrames();
  EXPECT_THAT(dump.video, SizeIs(1));
  EXPECT_THAT(dump.audio, IsEmpty());
}

// --- Whether another pass may find more ---

class Mp4MayFindMoreTest : public Mp4TrackReaderTest {
 protected:
  bool MayFindMore(const Mp4TrackReader::Source& source) const {
    return reader_.MayFindMore(source);
  }
};

TEST_F(Mp4MayFindMoreTest, TrueForTheFirstPass) { EXPECT_TRUE(MayFindMore(Part("any.mp4", 0))); }

TEST_F(Mp4MayFindMoreTest, FalseForTheSameBytes) {
  const MovieFile movie_file = WriteMovie(MakeMovie());
  const auto source = Part(movie_file.path, movie_file.Video(3));
  Pass(source);
  EXPECT_FALSE(MayFindMore(source));
}

TEST_F(Mp4MayFindMoreTest, TrueForNewBytesOfAnIncompleteIndex) {
  const MovieFile movie_file = WriteMovie(MakeMovie());
  const auto source = UpTo(movie_file, movie_file.file.index_end - 5);
  Pass(source);
  EXPECT_FALSE(MayFindMore(source));
  EXPECT_TRUE(MayFindMore(UpTo(movie_file, movie_file.file.index_end - 4)));
}

TEST_F(Mp4MayFindMoreTest, TrueOnceTheNextSampleIsReceived) {
  const MovieFile movie_file = WriteMovie(MakeMovie());
  Pass(Part(movie_file.path, movie_file.Video(3)));
  EXPECT_FALSE(MayFindMore(Part(movie_file.path, movie_file.Video(3))));
  EXPECT_TRUE(MayFindMore(Part(movie_file.path, movie_file.Audio(3))));
}

TEST_F(Mp4MayFindMoreTest, TrueForTheRestOfASample) {
  const MovieFile movie_file = WriteMovie(MakeMovie());
  Pass(Part(movie_file.path, movie_file.Audio(3) - 1));
  EXPECT_TRUE(MayFindMore(Part(movie_file.path, movie_file.Audio(3))));
}

TEST_F(Mp4MayFindMoreTest, TrueForTheRestOfASampleThatTheFileLacked) {
  const MovieFile movie_file = WriteMovie(MovieOf({VideoTrack()}));
  EXPECT_THAT(Pass(UpTo(movie_file, movie_file.Video(3) + 10)).video, SizeIs(3));
  const auto source = UpTo(movie_file, movie_file.Video(4));
  EXPECT_TRUE(MayFindMore(source));
  EXPECT_THAT(Pass(source).video, SizeIs(1));
}

TEST_F(Mp4MayFindMoreTest, FalseAfterTheEndOfBothTracks) {
  const MovieFile movie_file = WriteMovie(MakeMovie());
  Pass(Part(movie_file.path, movie_file.file.bytes.size()));
  EXPECT_FALSE(MayFindMore(Part(movie_file.path, movie_file.file.bytes.size() + 100)));
}

TEST_F(Mp4MayFindMoreTest, TrueForNewBytesThatMayHoldAnotherTrack) {
  if (!kKeepMp4Open)
    GTEST_SKIP() << "whether such an index is read depends on the installed library";
  const Movie movie = MakeMovie({.samples = 5});
  const mp4_boxes::File file = mp4_boxes::BuildWithOpenIndex(movie);
  const MovieFile movie_file{file, WriteLocalFile("movie.mp4", file.bytes)};
  for (std::size_t tracks = 0; tracks < 2; ++tracks) {
    SCOPED_TRACE(tracks);
    StartAnother();
    const FrameDump before = Pass(UpTo(movie_file, TrackBegin(file, tracks)));
    EXPECT_THAT(before.video, SizeIs(tracks == 0 ? 0 : 5));
    const auto source = UpTo(movie_file, file.bytes.size());
    EXPECT_TRUE(MayFindMore(source));
    const FrameDump rest = Pass(source);
    EXPECT_THAT(rest.video, SizeIs(tracks == 0 ? 5 : 0));
    EXPECT_THAT(rest.audio, SizeIs(5));
    EXPECT_FALSE(MayFindMore(Whole(movie_file.path)));
  }
}

TEST_F(Mp4MayFindMoreTest, FalseAfterTheVideoWasRefused) {
  Movie movie = MovieOf({VideoTrack({.samples = 5})});
  movie.tracks[0].entry = VideoEntry("hvc1", mp4_boxes::Box("hvcC", Bytes(23)));
  const MovieFile movie_file = WriteMovie(movie);
  Pass(Part(movie_file.path, movie_file.Video(3)));
  EXPECT_FALSE(MayFindMore(Whole(movie_file.path)));
}

TEST_F(Mp4MayFindMoreTest, TrueAfterASeek) {
  const MovieFile movie_file = WriteMovie(MakeMovie());
  const auto source = Part(movie_file.path, movie_file.file.bytes.size());
  Pass(source);
  reader_.Seek(0.4F, movie_file.path);
  EXPECT_TRUE(MayFindMore(source));
}

// The file could be read before, so it may be readable again without new bytes.
TEST_F(Mp4MayFindMoreTest, TrueAfterAKnownFileCouldNotBeOpened) {
  const Movie movie = MakeMovie({.samples = 5});
  const MovieFile movie_file = WriteMovie(movie);
  Pass(Part(movie_file.path, movie_file.Video(0)));
  const auto source = Whole(movie_file.path);
  std::filesystem::rename(movie_file.path, movie_file.path + ".away");
  EXPECT_EQ(DumpText(Pass(source)), "");
  std::filesystem::rename(movie_file.path + ".away", movie_file.path);
  ASSERT_TRUE(MayFindMore(source));
  EXPECT_EQ(DumpText(Pass(source)), DumpText(ExpectedFrames(movie)));
}

TEST_F(Mp4MayFindMoreTest, FalseForAFileThatNeverOpenedUntilItGrows) {
  const auto source = Whole("no/such/file.mp4");
  Pass(source);
  EXPECT_FALSE(MayFindMore(source));
  EXPECT_TRUE(MayFindMore(Whole("no/such/file.mp4")));
}

TEST_F(Mp4MayFindMoreTest, TrueAfterTheFileWasClosed) {
  const MovieFile movie_file = WriteMovie(MakeMovie());
  const auto source = Part(movie_file.path, movie_file.Audio(3));
  Pass(source);
  reader_.Close();
  EXPECT_TRUE(MayFindMore(Part(movie_file.path, movie_file.file.bytes.size())));
}

}  // namespace
}  // namespace stream
