// Samples: their offsets and times, and tables or files that end too early.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "tests/support/mp4_memory.h"
#include "tests/support/mp4_reading.h"

namespace stream {
namespace {

using mp4_boxes::BuildMp4;
using mp4_boxes::Bytes;
using mp4_boxes::Join;
using mp4_boxes::Movie;
using mp4_boxes::Table;
using mp4_boxes::Track;
using mp4_boxes::U32;
using mp4_boxes::U64;

Movie OneTrack(const Track& track) {
  Movie movie;
  movie.tracks = {track};
  return movie;
}

Track VideoTrack(std::size_t samples) {
  Track track;
  track.samples = mp4_boxes::NumberedSamples(samples, 40, 10);
  return track;
}

// Reads every sample in order, then samples in random order, partly with handles that have read
// nothing yet.
void ExpectSamples(const Movie& movie) {
  const mp4_boxes::File built = BuildMp4(movie);
  const Mp4FileHandle file = OpenMp4Bytes(built.bytes);
  ASSERT_TRUE(file);
  std::mt19937 random(1);
  for (std::size_t t = 0; t < movie.tracks.size(); ++t) {
    const auto expected = ExpectedSamples(movie.tracks[t]);
    const MP4TrackId id = movie.tracks[t].id;
    EXPECT_EQ(ReadMp4Track(file, id), expected);
    for (int i = 0; i < 200; ++i) {
      const std::size_t which = random() % expected.size();
      const auto sample = static_cast<MP4SampleId>(which + 1);
      const Mp4FileHandle fresh(i % 10 == 0 ? MP4Read("movie.mp4") : nullptr);
      const Mp4FileHandle& used = fresh ? fresh : file;
      ASSERT_EQ(MP4GetSampleTime(used.get(), id, sample), expected[which].start) << sample;
      ASSERT_EQ(MP4GetSampleFileOffset(used.get(), id, sample), built.offsets[t][which]) << sample;
      ASSERT_EQ(ReadMp4(used, id, sample), expected[which]) << sample;
    }
  }
}

TEST(IsobmffSamplesTest, ChunksOfAnySize) {
  for (const std::size_t samples_a_chunk : {1U, 2U, 7U, 64U, 65U, 300U}) {
    Track track = VideoTrack(300);
    track.samples_a_chunk = samples_a_chunk;
    ExpectSamples(OneTrack(track));
  }
}

TEST(IsobmffSamplesTest, ChunkRunsThatChangeConstantly) {
  Track track = VideoTrack(600);
  track.samples_a_chunk = 1;
  Movie movie = OneTrack(track);
  const mp4_boxes::File plain = BuildMp4(movie);
  // The samples are contiguous, so every division into chunks yields the same samples.
  std::vector<Bytes> runs;
  std::vector<Bytes> offsets;
  std::size_t sample = 0;
  for (std::uint32_t chunk = 1; sample < track.samples.size(); ++chunk) {
    const std::uint32_t count = 1 + chunk % 3;
    runs.push_back(Join({U32(chunk), U32(count), U32(1)}));
    offsets.push_back(U32(0));
    sample += count;
  }
  movie.tracks[0].replaced["stsc"] = Table("stsc", runs);
  movie.tracks[0].replaced["stco"] = Table("stco", offsets);
  const std::size_t data_at = BuildMp4(movie).index_end + 8;
  sample = 0;
  for (std::size_t chunk = 0; chunk < offsets.size(); ++chunk) {
    offsets[chunk] = U32(plain.offsets[0][sample] - plain.offsets[0][0] + data_at);
    sample += 1 + (chunk + 1) % 3;
  }
  movie.tracks[0].replaced["stco"] = Table("stco", offsets);
  ExpectSamples(movie);
}

TEST(IsobmffSamplesTest, SeveralTracks) { ExpectSamples(mp4_boxes::SmallMovie()); }

TEST(IsobmffSamplesTest, ManyRunsOfDurations) {
  Track track = VideoTrack(500);
  for (std::size_t i = 0; i < track.samples.size(); ++i)
    track.samples[i].duration = static_cast<std::uint32_t>(1 + i % 3);
  ExpectSamples(OneTrack(track));
}

TEST(IsobmffSamplesTest, CompositionOffsetsOfBothVersions) {
  for (const unsigned version : {0U, 1U}) {
    Track track = VideoTrack(400);
    track.composition_version = version;
    for (std::size_t i = 0; i < track.samples.size(); ++i)
      track.samples[i].composition =
          version == 0 ? static_cast<int>(i % 5) * 40 : 40 - static_cast<int>(i % 3) * 40;
    ExpectSamples(OneTrack(track));
  }
}

TEST(IsobmffSamplesTest, NegativeCompositionOffsetIsReturnedAs32BitsUnsigned) {
  Track track = VideoTrack(2);
  track.composition_version = 1;
  track.samples[1].composition = -40;
  const auto sample = ReadMp4(OpenMp4Movie(OneTrack(track)), 1, 2);
  ASSERT_TRUE(sample);
  EXPECT_EQ(sample->composition, 0xFFFFFFD8U);
}

TEST(IsobmffSamplesTest, CompactSizes) {
  for (const unsigned bits : {4U, 8U, 16U}) {
    for (const std::size_t count : {1U, 2U, 129U}) {
      Track track = VideoTrack(count);
      track.size_bits = bits;
      track.samples_a_chunk = 100;
      ExpectSamples(OneTrack(track));
    }
  }
}

TEST(IsobmffSamplesTest, SamplesOfOneSize) {
  Track track = VideoTrack(300);
  for (std::size_t i = 0; i < track.samples.size(); ++i)
    track.samples[i].data = Bytes(6, static_cast<std::uint8_t>(i));
  track.samples_a_chunk = 100;
  track.replaced["stsz"] = mp4_boxes::FullBox("stsz", 0, Join({U32(6), U32(300)}));
  ExpectSamples(OneTrack(track));
}

TEST(IsobmffSamplesTest, EmptySamples) {
  Track track = VideoTrack(20);
  track.samples[0].data.clear();
  track.samples[9].data.clear();
  track.samples[19].data.clear();
  track.samples_a_chunk = 4;
  ExpectSamples(OneTrack(track));
}

TEST(IsobmffSamplesTest, OffsetsOf64Bits) {
  Track track = VideoTrack(30);
  track.large_offsets = true;
  track.samples_a_chunk = 4;
  ExpectSamples(OneTrack(track));
}

TEST(IsobmffSamplesTest, SamplesLargerThanTheReadAhead) {
  Track track = VideoTrack(12);
  for (std::size_t i = 0; i < track.samples.size(); ++i)
    track.samples[i].data = Bytes(i % 2 == 0 ? 700'000 : 9'000, static_cast<std::uint8_t>(i));
  ExpectSamples(OneTrack(track));
}

// The read-ahead covers several windows, and the two tracks are far apart in the file.
TEST(IsobmffSamplesTest, TracksFarApart) {
  Movie movie = mp4_boxes::SmallMovie();
  for (Track& track : movie.tracks) {
    track.samples = mp4_boxes::NumberedSamples(400, 10, 4);
    for (std::size_t i = 0; i < 400; ++i)
      track.samples[i].data = Bytes(1000 + i, static_cast<std::uint8_t>(i * track.id));
    track.samples_a_chunk = 400;
  }
  ExpectSamples(movie);
  const Mp4FileHandle file = OpenMp4Movie(movie);
  for (MP4SampleId sample = 1; sample <= 400; ++sample) {
    for (const Track& track : movie.tracks) {
      const auto read = ReadMp4(file, track.id, sample);
      ASSERT_TRUE(read);
      EXPECT_EQ(read->data, track.samples[sample - 1].data);
    }
  }
}

// A sparse file of a little more than 5 GiB.
TEST(IsobmffSamplesTest, SampleBeyond4GiB) {
  constexpr std::uint64_t kOffset = (std::uint64_t{5} << 30) + 12345;
  Track track = VideoTrack(1);
  track.samples[0].data.clear();
  track.replaced["stsz"] = mp4_boxes::FullBox("stsz", 0, Join({U32(4), U32(1)}));
  track.replaced["stco"] = Table("co64", {U64(kOffset)});
  Movie movie = OneTrack(track);
  movie.large_boxes = true;
  mp4_boxes::WriteFile("movie.mp4", BuildMp4(movie).bytes);
  std::filesystem::resize_file("movie.mp4", kOffset);
  std::ofstream("movie.mp4", std::ios::binary | std::ios::app) << "four and more";
  const Mp4FileHandle file(MP4Read("movie.mp4"));
  EXPECT_EQ(MP4GetSampleFileOffset(file.get(), 1, 1), kOffset);
  const auto sample = ReadMp4(file, 1, 1);
  ASSERT_TRUE(sample);
  EXPECT_EQ(sample->data, mp4_boxes::Text("four"));
}

TEST(IsobmffSamplesTest, SampleNumbersOutsideTheTrack) {
  const Mp4FileHandle file = OpenMp4Movie(OneTrack(VideoTrack(5)));
  for (const MP4SampleId sample : {0U, 6U, 0xFFFFFFFFU}) {
    EXPECT_EQ(MP4GetSampleTime(file.get(), 1, sample), MP4_INVALID_TIMESTAMP) << sample;
    EXPECT_EQ(MP4GetSampleFileOffset(file.get(), 1, sample), UINT64_MAX) << sample;
    EXPECT_FALSE(ReadMp4(file, 1, sample)) << sample;
  }
  EXPECT_TRUE(ReadMp4(file, 1, 5));
}

TEST(IsobmffSamplesTest, FailedReadReturnsNoBlock) {
  const Mp4FileHandle file = OpenMp4Movie(OneTrack(VideoTrack(5)));
  std::uint8_t other = 0;
  std::uint8_t* bytes = &other;
  std::uint32_t size = 7;
  EXPECT_FALSE(MP4ReadSample(file.get(), 1, 6, &bytes, &size));
  EXPECT_EQ(bytes, nullptr);
  EXPECT_EQ(size, 0U);
}

TEST(IsobmffSamplesTest, OptionalResultsMayBeOmitted) {
  const Mp4FileHandle file = OpenMp4Movie(OneTrack(VideoTrack(1)));
  std::uint8_t* bytes = nullptr;
  std::uint32_t size = 0;
  EXPECT_TRUE(MP4ReadSample(file.get(), 1, 1, &bytes, &size));
  EXPECT_EQ(size, 1U);
  MP4Free(bytes);
}

// --- Tables of different lengths ---

std::size_t ReadableSamples(const std::string& type, const Bytes& table) {
  Track track = VideoTrack(10);
  track.samples_a_chunk = 2;
  track.replaced[type] = table;
  const Mp4FileHandle file = OpenMp4Movie(OneTrack(track));
  return file ? ReadMp4Track(file, 1).size() : 999;
}

Bytes Pairs(const std::string& type, std::uint32_t count) {
  return Table(type, {Join({U32(count), U32(40)})});
}

TEST(IsobmffSamplesTest, TimesThatEndEarly) {
  EXPECT_EQ(ReadableSamples("stts", Pairs("stts", 7)), 7U);
  EXPECT_EQ(ReadableSamples("stts", Pairs("stts", 0)), 0U);
  EXPECT_EQ(ReadableSamples("stts", Pairs("stts", 1000)), 10U);
}

TEST(IsobmffSamplesTest, CompositionOffsetsThatEndEarly) {
  EXPECT_EQ(ReadableSamples("ctts", Pairs("ctts", 7)), 7U);
  EXPECT_EQ(ReadableSamples("ctts", Table("ctts", {})), 0U);
}

TEST(IsobmffSamplesTest, SizesThatEndEarly) {
  Bytes sizes = Join({U32(0), U32(3), U32(1), U32(1), U32(1)});
  EXPECT_EQ(ReadableSamples("stsz", mp4_boxes::FullBox("stsz", 0, sizes)), 3U);
}

// A track may claim any number of samples of one size without a table of them.
TEST(IsobmffSamplesTest, MoreSizesThanOtherEntries) {
  const Bytes sizes = Join({U32(1), U32(0xFFFFFFFF)});
  EXPECT_EQ(ReadableSamples("stsz", mp4_boxes::FullBox("stsz", 0, sizes)), 10U);
}

TEST(IsobmffSamplesTest, ChunksThatEndEarly) {
  const Bytes offset = U32(40);
  EXPECT_EQ(ReadableSamples("stco", Table("stco", {offset, offset, offset})), 6U);
}

TEST(IsobmffSamplesTest, InvalidChunkRuns) {
  const auto run = [](std::uint32_t chunk, std::uint32_t samples) {
    return Join({U32(chunk), U32(samples), U32(1)});
  };
  EXPECT_EQ(ReadableSamples("stsc", Table("stsc", {run(1, 0)})), 0U);
  EXPECT_EQ(ReadableSamples("stsc", Table("stsc", {run(1, 1)})), 5U);
  EXPECT_EQ(ReadableSamples("stsc", Table("stsc", {run(1, 2), run(1, 2)})), 0U) << "a loop";
  EXPECT_EQ(ReadableSamples("stsc", Table("stsc", {run(1, 2), run(3, 2), run(2, 2)})), 4U);
  EXPECT_EQ(ReadableSamples("stsc", Table("stsc", {run(0, 2), run(1, 2)})), 0U);
  EXPECT_EQ(ReadableSamples("stsc", Table("stsc", {run(1, 2), run(900, 2)})), 10U);
  EXPECT_EQ(ReadableSamples("stsc", Table("stsc", {run(1, 0xFFFFFFFF)})), 10U);
  EXPECT_EQ(ReadableSamples("stsc", Table("stsc", {run(0xFFFFFFFF, 1)})), 0U);
}

TEST(IsobmffSamplesTest, RunsWithoutSamplesAreSkipped) {
  std::vector<Bytes> times(200, Join({U32(0), U32(5)}));
  times.push_back(Join({U32(10), U32(40)}));
  Track track = VideoTrack(10);
  track.replaced["stts"] = Table("stts", times);
  ExpectSamples(OneTrack(track));
}

TEST(IsobmffSamplesTest, SyncSamplesCountUpToTheFirstThatDecreases) {
  Track track = VideoTrack(10);
  for (std::size_t i = 0; i < 10; ++i) track.samples[i].sync = i + 1 == 2 || i + 1 == 9;
  track.replaced["stss"] = Table("stss", {U32(2), U32(9), U32(4), U32(10), U32(1)});
  ExpectSamples(OneTrack(track));
}

// --- Missing bytes ---

TEST(IsobmffSamplesTest, TruncatedMediaDataYieldsTheCompleteSamples) {
  const Movie movie = mp4_boxes::SmallMovie();
  const mp4_boxes::File built = BuildMp4(movie);
  for (std::size_t size = built.index_end; size < built.bytes.size(); ++size) {
    const Mp4FileHandle file = OpenMp4Bytes(
        Bytes(built.bytes.begin(), built.bytes.begin() + static_cast<std::ptrdiff_t>(size)));
    ASSERT_TRUE(file);
    // Each sample of both tracks, also after a missing one.
    for (std::size_t t = 0; t < 2; ++t) {
      for (std::size_t i = 0; i < movie.tracks[t].samples.size(); ++i) {
        const Bytes& data = movie.tracks[t].samples[i].data;
        const auto sample = ReadMp4(file, movie.tracks[t].id, static_cast<MP4SampleId>(i + 1));
        ASSERT_EQ(sample.has_value(), built.offsets[t][i] + data.size() <= size);
        if (sample) {
          ASSERT_EQ(sample->data, data);
        }
      }
    }
  }
}

TEST(IsobmffSamplesTest, OffsetsBeyondTheFile) {
  for (const std::uint64_t offset :
       {std::uint64_t{1} << 40, UINT64_MAX - 1, UINT64_MAX, std::uint64_t{1} << 63}) {
    Track track = VideoTrack(3);
    track.samples_a_chunk = 3;
    track.replaced["stco"] = Table("co64", {U64(offset)});
    const Mp4FileHandle file = OpenMp4Movie(OneTrack(track));
    ASSERT_TRUE(file);
    EXPECT_FALSE(ReadMp4(file, 1, 1));
    EXPECT_FALSE(ReadMp4(file, 1, 3));
  }
}

// No memory is allocated for a size that the file cannot hold.
TEST(IsobmffSamplesTest, SampleOf4GiBInASmallFile) {
  Track track = VideoTrack(2);
  track.replaced["stsz"] =
      mp4_boxes::FullBox("stsz", 0, Join({U32(0), U32(2), U32(0xFFFFFFFF), U32(1)}));
  track.samples_a_chunk = 2;
  const Mp4FileHandle file = OpenMp4Movie(OneTrack(track));
  EXPECT_FALSE(ReadMp4(file, 1, 1));
  EXPECT_FALSE(ReadMp4(file, 1, 2)) << "it follows the first one";
}

// The file is sparse.
TEST(IsobmffSamplesTest, SampleAbove64MiBIsNotRead) {
  constexpr std::uint32_t kMost = 64U << 20;
  for (const std::uint32_t size : {kMost, kMost + 1}) {
    Track track = VideoTrack(1);
    track.replaced["stsz"] = mp4_boxes::FullBox("stsz", 0, Join({U32(size), U32(1)}));
    const mp4_boxes::File built = BuildMp4(OneTrack(track));
    mp4_boxes::WriteFile("movie.mp4", built.bytes);
    std::filesystem::resize_file("movie.mp4", built.offsets[0][0] + size);
    const Mp4FileHandle file(MP4Read("movie.mp4"));
    ASSERT_TRUE(file);
    EXPECT_EQ(ReadMp4(file, 1, 1).has_value(), size == kMost) << size;
  }
}

#ifdef STREAM_TEST_FAILING_NEW
TEST(IsobmffSamplesTest, SampleIsFreedIfThereIsNoMemoryForTheReadAhead) {
  const Mp4FileHandle first = OpenMp4Movie(OneTrack(VideoTrack(5)));
  ASSERT_TRUE(ReadMp4(first, 1, 2)) << "loads the state that handles share";
  for (int i = 0; i < 20; ++i) {
    const Mp4FileHandle file(MP4Read("movie.mp4"));
    std::uint8_t* bytes = nullptr;
    std::uint32_t size = 0;
    bool is_read = true;
    {
      const FailingNew failing(0);
      is_read = MP4ReadSample(file.get(), 1, 2, &bytes, &size);
    }
    EXPECT_FALSE(is_read);
    EXPECT_EQ(bytes, nullptr);
    EXPECT_TRUE(ReadMp4(file, 1, 2)) << "memory is available again";
  }
}
#endif

TEST(IsobmffSamplesTest, FileThatShrinksWhileOpen) {
  const Movie movie = mp4_boxes::SmallMovie();
  const mp4_boxes::File built = BuildMp4(movie);
  const Mp4FileHandle file = OpenMp4Bytes(built.bytes);
  std::filesystem::resize_file("movie.mp4", built.index_end);
  EXPECT_FALSE(ReadMp4(file, 1, 1));
  std::filesystem::resize_file("movie.mp4", 0);
  EXPECT_FALSE(ReadMp4(file, 2, 1));
  mp4_boxes::WriteFile("movie.mp4", built.bytes);
  EXPECT_EQ(ReadMp4Track(file, 1), ExpectedSamples(movie.tracks[0])) << "the handle works again";
}

}  // namespace
}  // namespace stream
