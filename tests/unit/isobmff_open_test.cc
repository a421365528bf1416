// Which files open. A file with an incomplete index does not.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>

#include "isobmff/box.h"
#include "isobmff/table_box.h"
#include "platform/random_access_file.h"
#include "tests/support/mp4_reading.h"

namespace stream {
namespace {

using mp4_boxes::Box;
using mp4_boxes::BuildMp4;
using mp4_boxes::Bytes;
using mp4_boxes::FullBox;
using mp4_boxes::Join;
using mp4_boxes::Movie;
using mp4_boxes::Text;
using mp4_boxes::U32;
using mp4_boxes::Zeros;

void ExpectWhole(const Movie& movie) {
  const Mp4FileHandle file = OpenMp4Movie(movie);
  ASSERT_TRUE(file);
  for (const mp4_boxes::Track& track : movie.tracks)
    EXPECT_EQ(ReadMp4Track(file, track.id), ExpectedSamples(track)) << track.handler;
}

bool Opens(const Bytes& bytes) {
  std::filesystem::remove("movie.mp4");  // some file systems are slow to overwrite a file
  return OpenMp4Bytes(bytes) != nullptr;
}

TEST(IsobmffOpenTest, IndexBeforeTheMediaData) { ExpectWhole(mp4_boxes::SmallMovie()); }

TEST(IsobmffOpenTest, IndexAfterTheMediaData) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.index_first = false;
  ExpectWhole(movie);
}

TEST(IsobmffOpenTest, BoxSizesOf64Bits) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.large_boxes = true;
  ExpectWhole(movie);
  movie.index_first = false;
  ExpectWhole(movie);
}

TEST(IsobmffOpenTest, Version1HeadersHave64BitFields) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.version = 1;
  movie.duration = (std::uint64_t{1} << 32) + 7;
  for (auto& track : movie.tracks) track.version = 1;
  ExpectWhole(movie);
  EXPECT_EQ(MP4GetDuration(OpenMp4Movie(movie).get()), movie.duration);
}

TEST(IsobmffOpenTest, UnknownVersionIsRefused) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.version = 2;
  EXPECT_FALSE(OpenMp4Movie(movie));
}

TEST(IsobmffOpenTest, UnknownBoxesAreSkipped) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.before = Join({Box("free", Zeros(11)), Box("wide", {}), Box("uuid", Zeros(40))});
  movie.in_index = Join({Box("udta", Zeros(4)), Box("zzzz", Text("anything at all"))});
  ExpectWhole(movie);
}

TEST(IsobmffOpenTest, EditListIsIgnored) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.tracks[0].more =
      Box("edts", FullBox("elst", 0, Join({U32(1), U32(100), U32(256), U32(0x10000)})));
  ExpectWhole(movie);
}

// --- Padding ---

// SmallMovie with zeros after the last child of one container of one track.
Movie PaddedTrack(std::size_t track, const std::string& container, std::size_t zeros,
                  bool index_first) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.index_first = index_first;
  movie.tracks[track].padding[container] = zeros;
  return movie;
}

TEST(IsobmffOpenTest, ZerosAfterTheLastBoxOfATrackArePadding) {
  for (const char* const container : {"trak", "mdia", "minf", "stbl"}) {
    for (const std::size_t zeros : {1U, 2U, 3U, 4U, 5U, 6U, 7U, 8U, 9U, 12U, 15U, 16U, 19U}) {
      for (const bool index_first : {true, false}) {
        SCOPED_TRACE(std::string(container) + ' ' + std::to_string(zeros));
        ExpectWhole(PaddedTrack(0, container, zeros, index_first));
        ExpectWhole(PaddedTrack(1, container, zeros, index_first));
      }
    }
    ExpectWhole(PaddedTrack(0, container, 1024, false));
    ExpectWhole(PaddedTrack(1, container, 1024, true));
    ExpectWhole(PaddedTrack(1, container, 1025, true));
  }
}

TEST(IsobmffOpenTest, ZerosAfterTheLastBoxOfTheIndexArePadding) {
  for (const std::size_t zeros : {1U, 3U, 4U, 7U, 8U, 12U, 16U, 100U, 128U}) {
    for (const bool index_first : {true, false}) {
      SCOPED_TRACE(zeros);
      Movie movie = mp4_boxes::SmallMovie();
      movie.index_first = index_first;
      movie.in_index = Zeros(zeros);
      ExpectWhole(movie);
      movie.large_boxes = true;
      ExpectWhole(movie);
    }
  }
}

TEST(IsobmffOpenTest, ZerosInAllContainersAtOnceArePadding) {
  Movie movie = mp4_boxes::SmallMovie();
  for (mp4_boxes::Track& track : movie.tracks) {
    track.padding = {{"trak", 4}, {"mdia", 8}, {"minf", 12}, {"stbl", 3}};
    track.more = Box("udta", Join({Box("name", Text("x")), Zeros(4)}));
  }
  movie.in_index = Join({Box("udta", Zeros(12)), Zeros(8)});
  ExpectWhole(movie);
  movie.index_first = false;
  ExpectWhole(movie);
}

TEST(IsobmffOpenTest, ZerosAfterTheIndexAtTheEndOfTheFileArePadding) {
  for (const std::size_t zeros : {1U, 4U, 8U, 12U, 5000U}) {
    Movie movie = mp4_boxes::SmallMovie();
    movie.index_first = false;
    EXPECT_TRUE(Opens(Join({BuildMp4(movie).bytes, Zeros(zeros)}))) << zeros;
  }
}

TEST(IsobmffOpenTest, ZerosAtTheEndOfAnIndexWithoutSizeArePadding) {
  for (const std::size_t zeros : {1U, 4U, 8U, 12U}) {
    const Bytes built = mp4_boxes::BuildWithOpenIndex(mp4_boxes::SmallMovie()).bytes;
    EXPECT_TRUE(Opens(Join({built, Zeros(zeros)}))) << zeros;
  }
}

// Zeros at the end of a file may be reserved space for bytes not received yet.
TEST(IsobmffOpenTest, ZerosAtTheEndOfTheFileThatCouldBeATableOrATrackAreNotPadding) {
  for (const char* const container : {"trak", "mdia", "minf", "stbl"})
    EXPECT_FALSE(OpenMp4Movie(PaddedTrack(1, container, 20, false))) << container;
  Movie movie = mp4_boxes::SmallMovie();
  movie.index_first = false;
  movie.in_index = Zeros(129);
  EXPECT_FALSE(OpenMp4Movie(movie));
  movie.index_first = true;
  EXPECT_TRUE(OpenMp4Movie(movie));
}

TEST(IsobmffOpenTest, ZerosBeforeAnotherBoxAreNotPadding) {
  for (const std::size_t zeros : {8U, 12U, 16U}) {
    Movie movie = mp4_boxes::SmallMovie();
    movie.in_index = Join({Zeros(zeros), Box("udta", Text("text"))});
    EXPECT_FALSE(OpenMp4Movie(movie)) << zeros;
  }
}

// Only a box at the top level may extend to the end of the file.
TEST(IsobmffOpenTest, ChildWithoutSizeIsRefused) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.in_index = Join({U32(0), Text("udta"), Zeros(12)});
  EXPECT_FALSE(OpenMp4Movie(movie));
}

TEST(IsobmffOpenTest, NonZeroRestTooShortForABoxIsRefused) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.in_index = {0, 0, 1};
  EXPECT_FALSE(OpenMp4Movie(movie));
}

// The last box of the file may have size 0, which means that it extends to the end of the file.
TEST(IsobmffOpenTest, LastBoxWithoutSizeExtendsToTheEnd) {
  const Movie movie = mp4_boxes::SmallMovie();
  mp4_boxes::File built = BuildMp4(movie);
  std::fill_n(built.bytes.begin() + static_cast<std::ptrdiff_t>(built.index_end), 4,
              0);  // the size of mdat
  EXPECT_TRUE(Opens(built.bytes));
  EXPECT_TRUE(Opens(mp4_boxes::BuildWithOpenIndex(movie).bytes));
}

TEST(IsobmffOpenTest, MovieWithoutTracksOpens) {
  Movie movie;
  const Mp4FileHandle file = OpenMp4Movie(movie);
  ASSERT_TRUE(file);
  EXPECT_EQ(MP4GetNumberOfTracks(file.get()), 0U);
}

TEST(IsobmffOpenTest, FragmentedFileHasNoSamples) {
  Movie movie = mp4_boxes::SmallMovie();
  for (auto& track : movie.tracks) track.samples.clear();
  movie.in_index = Box("mvex", FullBox("trex", 0, Zeros(20)));
  Bytes bytes = BuildMp4(movie).bytes;
  mp4_boxes::Append(bytes, Box("moof", FullBox("mfhd", 0, U32(1))));
  const Mp4FileHandle file = OpenMp4Bytes(bytes);
  ASSERT_TRUE(file);
  EXPECT_EQ(MP4GetNumberOfTracks(file.get()), 2U);
  EXPECT_FALSE(ReadMp4(file, 1, 1));
  EXPECT_EQ(MP4GetSampleTime(file.get(), 1, 1), MP4_INVALID_TIMESTAMP);
}

TEST(IsobmffOpenTest, FilesThatAreNoMoviesDoNotOpen) {
  std::filesystem::create_directory("directory");
  EXPECT_EQ(MP4Read("directory"), nullptr);
  EXPECT_EQ(MP4Read("no such file"), nullptr);
  EXPECT_EQ(MP4Read(""), nullptr);
  EXPECT_EQ(MP4Read(nullptr), nullptr);
  EXPECT_FALSE(Opens({}));
  EXPECT_FALSE(Opens(Text("#EXTM3U and so on, a text that is no movie")));
  EXPECT_FALSE(Opens(Box("ftyp", Text("isom"))));
}

TEST(IsobmffOpenTest, PathIsUtf8) {
  const std::string path = "\xC3\xA4\xE6\x98\xA0\xF0\x9F\x8E\xAC.mp4";
  const std::u8string name(path.begin(), path.end());
  const Bytes bytes = BuildMp4(mp4_boxes::SmallMovie()).bytes;
  std::ofstream out(std::filesystem::path(name), std::ios::binary);
  out.write(reinterpret_cast<const char*>(bytes.data()),
            static_cast<std::streamsize>(bytes.size()));
  out.close();
  EXPECT_NE(Mp4FileHandle(MP4Read(path.c_str())), nullptr);
  EXPECT_EQ(MP4Read("\xFF\xFE not UTF-8.mp4"), nullptr);
}

// Other programs may rename or delete the file meanwhile.
TEST(IsobmffOpenTest, OpenFileCanBeRenamedAndDeleted) {
  const Movie movie = mp4_boxes::SmallMovie();
  const Mp4FileHandle file = OpenMp4Movie(movie);
  ASSERT_TRUE(file);
  std::filesystem::rename("movie.mp4", "renamed.mp4");
  EXPECT_TRUE(std::filesystem::remove("renamed.mp4"));
  EXPECT_EQ(ReadMp4Track(file, 1), ExpectedSamples(movie.tracks[0]));
}

// --- Incomplete index ---

TEST(IsobmffOpenTest, FileTruncatedInItsIndexDoesNotOpen) {
  for (const bool index_first : {true, false}) {
    Movie movie = mp4_boxes::SmallMovie();
    movie.index_first = index_first;
    const mp4_boxes::File built = BuildMp4(movie);
    for (std::size_t size = 0; size < built.index_end; ++size) {
      const Bytes cut(built.bytes.begin(), built.bytes.begin() + static_cast<std::ptrdiff_t>(size));
      ASSERT_FALSE(Opens(cut)) << size << " bytes, the index ends at " << built.index_end;
    }
  }
}

void ExpectToOpenInNoPart(const Movie& movie) {
  const mp4_boxes::File built = BuildMp4(movie);
  constexpr std::size_t kLastEntry = 4;  // bytes of a chunk offset
  for (std::size_t size = 0; size + kLastEntry <= built.index_end; ++size) {
    Bytes holed = built.bytes;
    std::fill(holed.begin() + static_cast<std::ptrdiff_t>(size), holed.end(), std::uint8_t{0});
    ASSERT_FALSE(Opens(holed)) << size << " bytes, the index ends at " << built.index_end;
  }
}

// A sparse file during its download: bytes not received yet read as zeros.
TEST(IsobmffOpenTest, IndexThatEndsInZerosDoesNotOpen) {
  for (const bool index_first : {true, false}) {
    Movie movie = mp4_boxes::SmallMovie();
    movie.index_first = index_first;
    ExpectToOpenInNoPart(movie);
    std::swap(movie.tracks[0], movie.tracks[1]);
    ExpectToOpenInNoPart(movie);
  }
}

// A damaged track must not make an incomplete index look complete.
TEST(IsobmffOpenTest, IndexWithADamagedTrackThatEndsInZerosDoesNotOpen) {
  for (const bool index_first : {true, false}) {
    Movie movie = mp4_boxes::SmallMovie();
    movie.index_first = index_first;
    movie.tracks[0].replaced["stsd"] = Bytes();
    ExpectToOpenInNoPart(movie);
  }
}

TEST(IsobmffOpenTest, IndexWithAHoleDoesNotOpen) {
  const mp4_boxes::File built = BuildMp4(mp4_boxes::SmallMovie());
  for (const std::size_t begin : {8U, 116U}) {  // the offsets of mvhd and of the first trak
    Bytes holed = built.bytes;
    const auto from = holed.begin() + static_cast<std::ptrdiff_t>(built.index_begin + begin);
    std::fill(from, from + 64, std::uint8_t{0});
    EXPECT_FALSE(Opens(holed)) << begin;
  }
}

TEST(IsobmffOpenTest, FileOpensOnceItsIndexIsComplete) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.index_first = false;
  const mp4_boxes::File built = BuildMp4(movie);
  const Bytes most(built.bytes.begin(), built.bytes.end() - 1);
  EXPECT_FALSE(Opens(most));
  EXPECT_TRUE(Opens(built.bytes));
}

TEST(IsobmffOpenTest, FileWithoutAMovieHeaderIsRefused) {
  const Bytes bytes = BuildMp4(mp4_boxes::SmallMovie()).bytes;
  for (const char* const type : {"moov", "mvhd"}) {
    Bytes renamed = bytes;
    const Bytes name = Text(type);
    const auto found = std::search(renamed.begin(), renamed.end(), name.begin(), name.end());
    ASSERT_NE(found, renamed.end());
    *found = 'X';
    EXPECT_FALSE(Opens(renamed)) << type;
  }
}

// The file contains only the head of the table. Nothing else is read.
TEST(IsobmffOpenTest, TableAbove32MiBIsRefused) {
  constexpr std::size_t kMost = std::size_t{8} << 20;  // entries of four bytes
  for (const std::size_t count : {kMost, kMost + 1}) {
    const Bytes head = Join({U32(0), U32(0), U32(count)});
    mp4_boxes::WriteFile("table", head);
    const auto file = platform::RandomAccessFile::Open("table");
    ASSERT_TRUE(file);
    const std::uint64_t size = head.size() + count * 4;
    isobmff::HeaderReader reader(*file, size);
    const auto table = isobmff::ReadSizeTableBox(reader, {0, size});
    EXPECT_EQ(table.has_value(), count == kMost) << count;
  }
}

TEST(IsobmffOpenTest, IndexOfVeryManyTinyBoxesIsRefused) {
  Bytes tiny;
  for (int i = 0; i < 4000; ++i) mp4_boxes::Append(tiny, Box("free", {}));
  const auto opens = [&tiny](std::uint32_t tracks) {
    Movie movie;
    for (std::uint32_t id = 1; id <= tracks; ++id) {
      mp4_boxes::Track track = mp4_boxes::SmallMovie().tracks[0];
      track.id = id;
      track.more = tiny;
      movie.tracks.push_back(track);
    }
    return Opens(BuildMp4(movie).bytes);
  };
  EXPECT_TRUE(opens(24));
  EXPECT_FALSE(opens(25));
}

// The search for the index ends after a limited number of boxes.
TEST(IsobmffOpenTest, FileOfVeryManyEmptyBoxesIsRefused) {
  Bytes bytes;
  for (int i = 0; i < 70000; ++i) mp4_boxes::Append(bytes, Box("free", {}));
  mp4_boxes::Append(bytes, BuildMp4(mp4_boxes::SmallMovie()).bytes);
  EXPECT_FALSE(Opens(bytes));
}

}  // namespace
}  // namespace stream
