// Malformed files: whatever they contain, no read is out of bounds, no call hangs, and no sample is
// larger than the file. The sanitizers check this.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <string>

#include "tests/support/mp4_exercise.h"
#include "tests/support/mp4_reading.h"

namespace stream {
namespace {

using mp4_boxes::Bytes;
using mp4_boxes::File;

Mp4Exercise Exercise(const Bytes& bytes) {
  std::filesystem::remove("movie.mp4");  // some file systems are slow to overwrite a file
  mp4_boxes::WriteFile("movie.mp4", bytes);
  return ExerciseMp4("movie.mp4");
}

File SmallFile(bool index_first) {
  mp4_boxes::Movie movie = mp4_boxes::SmallMovie();
  movie.index_first = index_first;
  movie.tracks[0].samples[3].composition = 512;
  return BuildMp4(movie);
}

TEST(IsobmffMutationTest, IntactFileYieldsAllTracksAndSamples) {
  const Mp4Exercise result = Exercise(SmallFile(true).bytes);
  EXPECT_EQ(result.tracks, 2U);
  EXPECT_EQ(result.samples, 25U);
}

TEST(IsobmffMutationTest, EveryNumberOfTheIndexReplaced) {
  const File built = SmallFile(true);
  const Mp4Exercise whole = Exercise(built.bytes);
  for (const std::uint32_t value : {0U, 1U, 8U, 0x7FFFFFFFU, 0x80000000U, 0xFFFFFFFFU}) {
    for (std::size_t at = built.index_begin; at + 4 <= built.index_end; ++at) {
      Bytes changed = built.bytes;
      const Bytes number = mp4_boxes::U32(value);
      std::copy(number.begin(), number.end(), changed.begin() + static_cast<std::ptrdiff_t>(at));
      const Mp4Exercise result = Exercise(changed);
      ASSERT_LE(result.tracks, whole.tracks) << at;
      ASSERT_LE(result.largest_sample, changed.size()) << at;
    }
  }
}

TEST(IsobmffMutationTest, EachByteOfTheFileRemoved) {
  const File built = SmallFile(false);
  for (std::size_t at = 0; at < built.bytes.size(); ++at) {
    Bytes changed = built.bytes;
    changed.erase(changed.begin() + static_cast<std::ptrdiff_t>(at));
    Exercise(changed);
  }
}

TEST(IsobmffMutationTest, RandomBytesChanged) {
  const File built = SmallFile(true);
  std::mt19937 random(7);
  for (int round = 0; round < 3000; ++round) {
    Bytes changed = built.bytes;
    for (unsigned i = random() % 8; i != 0; --i)
      changed[random() % changed.size()] = static_cast<std::uint8_t>(random());
    Exercise(changed);
  }
}

}  // namespace
}  // namespace stream
