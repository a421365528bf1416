// All open handles of a file share its index, whatever happens to the file.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "isobmff/index_registry.h"
#include "isobmff/open_movie.h"
#include "tests/support/mp4_reading.h"

namespace stream {
namespace {

using isobmff::OpenMovie;
using mp4_boxes::BuildMp4;
using mp4_boxes::Bytes;
using mp4_boxes::Movie;

// A handle points to an OpenMovie.
const isobmff::MovieIndex* IndexOf(const Mp4FileHandle& file) {
  return &static_cast<const OpenMovie*>(file.get())->Index();
}

Mp4FileHandle Open(const std::string& path) { return Mp4FileHandle(MP4Read(path.c_str())); }

TEST(IsobmffSharingTest, HandlesOfOneFileShareItsIndex) {
  // An earlier run's link, which is the same file as movie.mp4: Windows removes no open file.
  std::filesystem::remove("other_name.mp4");
  const Mp4FileHandle first = OpenMp4Bytes(BuildMp4(mp4_boxes::SmallMovie()).bytes);
  const Mp4FileHandle second = Open("movie.mp4");
  EXPECT_EQ(IndexOf(first), IndexOf(second));
  std::filesystem::create_hard_link("movie.mp4", "other_name.mp4");
  EXPECT_EQ(IndexOf(Open("other_name.mp4")), IndexOf(first));
}

TEST(IsobmffSharingTest, EqualFilesDoNotShare) {
  const Bytes bytes = BuildMp4(mp4_boxes::SmallMovie()).bytes;
  const Mp4FileHandle first = OpenMp4Bytes(bytes, "first.mp4");
  const Mp4FileHandle second = OpenMp4Bytes(bytes, "second.mp4");
  EXPECT_NE(IndexOf(first), IndexOf(second));
}

// Like the pipeline, opens the next handle before the previous one is closed.
TEST(IsobmffSharingTest, IndexIsPassedOnFromHandleToHandle) {
  const Movie movie = mp4_boxes::SmallMovie();
  Mp4FileHandle file = OpenMp4Bytes(BuildMp4(movie).bytes);
  const isobmff::MovieIndex* const index = IndexOf(file);
  for (int i = 0; i < 5; ++i) {
    file = Open("movie.mp4");
    EXPECT_EQ(IndexOf(file), index);
    EXPECT_EQ(ReadMp4Track(file, 2), ExpectedSamples(movie.tracks[1]));
  }
}

TEST(IsobmffSharingTest, IndexIsReleasedWithTheLastHandle) {
  mp4_boxes::WriteFile("movie.mp4", BuildMp4(mp4_boxes::SmallMovie()).bytes);
  const auto file = platform::RandomAccessFile::Open("movie.mp4");
  ASSERT_TRUE(file);
  const std::weak_ptr<const isobmff::MovieIndex> index = isobmff::IndexOf(*file);
  EXPECT_TRUE(index.expired());
}

TEST(IsobmffSharingTest, GrowingFileKeepsItsIndex) {
  const Movie movie = mp4_boxes::SmallMovie();
  const mp4_boxes::File built = BuildMp4(movie);
  const auto part = [&](std::size_t size) {
    return Bytes(built.bytes.begin(), built.bytes.begin() + static_cast<std::ptrdiff_t>(size));
  };
  Mp4FileHandle file = OpenMp4Bytes(part(built.index_end));
  const isobmff::MovieIndex* const index = IndexOf(file);
  std::size_t read = 0;
  for (std::size_t size = built.index_end; size <= built.bytes.size(); ++size) {
    std::ofstream out("movie.mp4", std::ios::binary | std::ios::in);
    out.write(reinterpret_cast<const char*>(built.bytes.data()),
              static_cast<std::streamsize>(size));
    out.close();
    file = Open("movie.mp4");
    ASSERT_EQ(IndexOf(file), index);
    while (read < 10) {
      const auto sample = ReadMp4(file, 1, static_cast<MP4SampleId>(read + 1));
      ASSERT_EQ(sample.has_value(),
                built.offsets[0][read] + movie.tracks[0].samples[read].data.size() <= size);
      if (!sample) break;
      ASSERT_EQ(sample->data, movie.tracks[0].samples[read++].data);
    }
  }
  EXPECT_EQ(read, 10U);
}

// While it is incomplete, an index that extends to the end of its file looks like one with fewer
// tracks.
TEST(IsobmffSharingTest, IndexWithoutSizeIsReadAgainAfterItsFileHasGrown) {
  const mp4_boxes::File built = mp4_boxes::BuildWithOpenIndex(mp4_boxes::SmallMovie());
  Mp4FileHandle file;
  for (std::uint32_t tracks = 0; tracks < 2; ++tracks) {
    const auto size = static_cast<std::ptrdiff_t>(mp4_boxes::TrackBegin(built, tracks));
    file = OpenMp4Bytes({built.bytes.begin(), built.bytes.begin() + size});
    ASSERT_TRUE(file);
    EXPECT_EQ(MP4GetNumberOfTracks(file.get()), tracks);
  }
  file = OpenMp4Bytes(built.bytes);
  ASSERT_TRUE(file);
  EXPECT_EQ(MP4GetNumberOfTracks(file.get()), 2U);
  EXPECT_EQ(IndexOf(Open("movie.mp4")), IndexOf(file)) << "shared while the file does not change";
}

// A pipeline empties its cache file and fills it again for another address.
TEST(IsobmffSharingTest, RewrittenFileHasAnIndexOfItsOwn) {
  Movie movie = mp4_boxes::SmallMovie();
  const Mp4FileHandle old = OpenMp4Bytes(BuildMp4(movie).bytes);
  movie.duration += 1;
  const Mp4FileHandle changed = OpenMp4Bytes(BuildMp4(movie).bytes);
  ASSERT_TRUE(changed);
  EXPECT_NE(IndexOf(old), IndexOf(changed));
  EXPECT_EQ(MP4GetDuration(changed.get()), movie.duration);
  EXPECT_EQ(IndexOf(Open("movie.mp4")), IndexOf(changed));
}

// The head of an index, which is compared, covers all of a small index, but not all of this one.
TEST(IsobmffSharingTest, FileWhoseIndexDiffersOnlyAtItsEndHasAnIndexOfItsOwn) {
  constexpr std::size_t kHead = 4096;
  Movie movie = mp4_boxes::SmallMovie();
  movie.tracks[0].samples = mp4_boxes::NumberedSamples(1500, 512, 5);
  const mp4_boxes::File built = BuildMp4(movie);
  for (auto& sample : movie.tracks[1].samples) ++sample.duration;
  const mp4_boxes::File other = BuildMp4(movie);
  const auto [differs, in_other] =
      std::mismatch(built.bytes.begin(), built.bytes.end(), other.bytes.begin());
  ASSERT_GT(static_cast<std::size_t>(differs - built.bytes.begin()), built.index_begin + kHead);
  ASSERT_EQ(built.bytes.size(), other.bytes.size());

  const Mp4FileHandle old = OpenMp4Bytes(built.bytes);
  const Mp4FileHandle changed = OpenMp4Bytes(other.bytes);
  EXPECT_NE(IndexOf(old), IndexOf(changed));
  EXPECT_EQ(ReadMp4Track(changed, 2), ExpectedSamples(movie.tracks[1]));
}

TEST(IsobmffSharingTest, SampleWrittenAfterTheOpenIsRead) {
  const Movie movie = mp4_boxes::SmallMovie();
  const mp4_boxes::File built = BuildMp4(movie);
  const auto end_of_index = built.bytes.begin() + static_cast<std::ptrdiff_t>(built.index_end);
  const Mp4FileHandle file = OpenMp4Bytes({built.bytes.begin(), end_of_index});
  ASSERT_TRUE(file);
  EXPECT_FALSE(ReadMp4(file, 1, 1));
  mp4_boxes::WriteFile("movie.mp4", built.bytes);
  EXPECT_EQ(ReadMp4Track(file, 1), ExpectedSamples(movie.tracks[0]));
}

TEST(IsobmffSharingTest, EmptiedFileDoesNotOpenAgain) {
  const mp4_boxes::File built = BuildMp4(mp4_boxes::SmallMovie());
  const Mp4FileHandle file = OpenMp4Bytes(built.bytes);
  std::filesystem::resize_file("movie.mp4", built.index_end - 1);
  EXPECT_FALSE(Open("movie.mp4"));
  std::filesystem::resize_file("movie.mp4", 0);
  EXPECT_FALSE(Open("movie.mp4"));
}

// Reading a table is retried after a failure.
TEST(IsobmffSharingTest, TablesThatCouldNotBeReadAreReadLater) {
  const Movie movie = mp4_boxes::SmallMovie();
  const mp4_boxes::File built = BuildMp4(movie);
  const Mp4FileHandle file = OpenMp4Bytes(built.bytes);
  std::filesystem::resize_file("movie.mp4", 100);
  EXPECT_EQ(MP4GetSampleTime(file.get(), 1, 2), MP4_INVALID_TIMESTAMP);
  EXPECT_EQ(MP4GetSampleFileOffset(file.get(), 1, 2), UINT64_MAX);
  EXPECT_FALSE(ReadMp4(file, 1, 2));
  mp4_boxes::WriteFile("movie.mp4", built.bytes);
  EXPECT_EQ(MP4GetSampleTime(file.get(), 1, 2), 512U);
  EXPECT_EQ(ReadMp4Track(file, 1), ExpectedSamples(movie.tracks[0]));
}

TEST(IsobmffSharingTest, ManyThreadsReadTheSameFile) {
  Movie movie = mp4_boxes::SmallMovie();
  for (auto& track : movie.tracks) track.samples = mp4_boxes::NumberedSamples(500, 3, 7);
  mp4_boxes::WriteFile("movie.mp4", BuildMp4(movie).bytes);
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < 4; ++i) {
    threads.emplace_back([&movie, i] {
      const mp4_boxes::Track& track = movie.tracks[i % 2];
      for (int round = 0; round < 5; ++round) {
        const Mp4FileHandle file = Open("movie.mp4");
        EXPECT_EQ(ReadMp4Track(file, track.id), ExpectedSamples(track));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
}  // namespace stream
