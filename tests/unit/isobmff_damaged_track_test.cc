// A damaged track is not listed, and the other tracks are read as if it did not exist.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "tests/support/mp4_reading.h"

namespace stream {
namespace {

using mp4_boxes::Box;
using mp4_boxes::BuildMp4;
using mp4_boxes::Bytes;
using mp4_boxes::FullBox;
using mp4_boxes::Join;
using mp4_boxes::Movie;
using mp4_boxes::Table;
using mp4_boxes::Text;
using mp4_boxes::Track;
using mp4_boxes::U32;
using mp4_boxes::Zeros;

struct Damage {
  std::string name;
  std::function<void(Track&)> change;
};

void PrintTo(const Damage& damage, std::ostream* out) { *out << damage.name; }

Damage Replaced(const std::string& name, const std::string& type, const Bytes& box) {
  return {name, [=](Track& track) { track.replaced[type] = box; }};
}

Damage WithEntry(const std::string& name, const Bytes& entry) {
  return {name, [=](Track& track) { track.entry = entry; }};
}

Damage WithMore(const std::string& name, const Bytes& boxes) {
  return {name, [=](Track& track) { track.more = boxes; }};
}

std::vector<Damage> Damages() {
  const Bytes run = Join({U32(1), U32(2), U32(1)});
  return {
      Replaced("NoSampleDescription", "stsd", {}),
      Replaced("NoTimes", "stts", {}),
      Replaced("NoChunkRuns", "stsc", {}),
      Replaced("NoSizes", "stsz", {}),
      Replaced("NoOffsets", "stco", {}),
      Replaced("EmptyTimes", "stts", Table("stts", {})),
      Replaced("EmptyChunkRuns", "stsc", Table("stsc", {})),
      Replaced("EmptyOffsets", "stco", Table("stco", {})),
      Replaced("MoreTimesThanTheBoxHolds", "stts", FullBox("stts", 0, Join({U32(2), U32(1)}))),
      Replaced("MoreOffsetsThanTheBoxHolds", "stco", FullBox("stco", 0, U32(0xFFFFFFFF))),
      Replaced("MoreSizesThanTheBoxHolds", "stsz", FullBox("stsz", 0, Join({U32(0), U32(9)}))),
      Replaced("TableWithoutACount", "stsc", FullBox("stsc", 0, {})),
      Replaced("SizesOfAnOddWidth", "stsz", FullBox("stz2", 0, Join({U32(5), U32(1), U32(7)}))),
      Replaced("ChunkRunsThatEndInZeros", "stsc", Table("stsc", {run, Zeros(12)})),
      Replaced("BoxOfTheTablesThatIsTooLarge", "stsd", Join({U32(0x7FFFFFFF), Text("stsd")})),
      Replaced("BoxOfTheTablesWithoutSize", "stsd", Join({U32(0), Text("stsd"), Zeros(8)})),
      Replaced("BoxOfTheTablesThatIsTooSmall", "stsd", Join({U32(7), Text("stsd")})),
      Replaced("HoleInTheTables", "stsc", Join({Zeros(16), Text("more")})),
      WithEntry("SampleEntryThatIsCutOff", Text("avc1")),
      WithEntry("SampleEntryThatIsTooLarge", Join({U32(500), Text("avc1"), Zeros(40)})),
      WithMore("BoxOfTheTrackThatIsTooLarge", Join({U32(0x7FFFFFFF), Text("edts")})),
      WithMore("BoxOfTheTrackOf64BitsThatIsTooLarge",
               Join({U32(1), Text("edts"), mp4_boxes::U64(UINT64_MAX)})),
      {"HeadersOfAnUnknownVersion", [](Track& track) { track.version = 2; }},
      {"TrackIdOfZero", [](Track& track) { track.id = 0; }},
      {"NoHandlerType", [](Track& track) { track.handler = std::string(4, '\0'); }},
  };
}

constexpr MP4TrackId kDamagedId = 9;

// SmallMovie with a damaged copy of one of its tracks inserted at position `index`.
Movie MovieWith(const Damage& damage, std::size_t index, bool is_video) {
  Movie movie = mp4_boxes::SmallMovie();
  Track damaged = movie.tracks[is_video ? 0 : 1];
  damaged.id = kDamagedId;
  damage.change(damaged);
  movie.tracks.insert(movie.tracks.begin() + static_cast<std::ptrdiff_t>(index), damaged);
  return movie;
}

// Expects that the tracks of SmallMovie, and no others, are listed and can be read.
void ExpectTheOthers(const Mp4FileHandle& file) {
  ASSERT_TRUE(file);
  EXPECT_EQ(MP4GetNumberOfTracks(file.get()), 2U);
  EXPECT_EQ(MP4FindTrackId(file.get(), 0, "vide"), 1U);
  EXPECT_EQ(MP4FindTrackId(file.get(), 0, "soun"), 2U);
  EXPECT_EQ(MP4GetTrackType(file.get(), kDamagedId), nullptr);
  for (const Track& track : mp4_boxes::SmallMovie().tracks)
    EXPECT_EQ(ReadMp4Track(file, track.id), ExpectedSamples(track)) << track.handler;
}

class IsobmffDamagedTrackTest : public testing::TestWithParam<Damage> {};

TEST_P(IsobmffDamagedTrackTest, OtherTracksAreRead) {
  for (const bool is_video : {true, false}) {
    for (const std::size_t index : {0U, 1U, 2U}) {
      for (const bool index_first : {true, false}) {
        SCOPED_TRACE(std::to_string(index) + (index_first ? " first" : " last"));
        Movie movie = MovieWith(GetParam(), index, is_video);
        movie.index_first = index_first;
        // If the file ended with the index, zeros at its end could be bytes not received yet.
        movie.in_index = Box("udta", Text("end"));
        ExpectTheOthers(OpenMp4Movie(movie));
      }
    }
  }
}

TEST_P(IsobmffDamagedTrackTest, MovieOfDamagedTracksHasNoTracks) {
  Movie movie = mp4_boxes::SmallMovie();
  GetParam().change(movie.tracks[0]);
  movie.tracks.pop_back();
  const Mp4FileHandle file = OpenMp4Movie(movie);
  ASSERT_TRUE(file);
  EXPECT_EQ(MP4GetNumberOfTracks(file.get()), 0U);
}

INSTANTIATE_TEST_SUITE_P(Damages, IsobmffDamagedTrackTest, testing::ValuesIn(Damages()),
                         [](const auto& tested) { return tested.param.name; });

// Renames one box at a time, which makes it unknown.
TEST(IsobmffDamagedTracksTest, TrackThatLacksOneOfItsHeadersIsNotListed) {
  const Damage none{"", [](Track&) {}};
  for (const std::size_t index : {0U, 2U}) {
    const mp4_boxes::File built = BuildMp4(MovieWith(none, index, false));
    for (const char* const type : {"tkhd", "mdia", "mdhd", "hdlr", "minf", "stbl", "stsd"}) {
      Bytes renamed = built.bytes;
      const Bytes name = Text(type);
      const auto track = mp4_boxes::TrackBegin(built, index);
      const auto found = std::search(renamed.begin() + static_cast<std::ptrdiff_t>(track),
                                     renamed.end(), name.begin(), name.end());
      ASSERT_NE(found, renamed.end());
      *found = 'X';
      SCOPED_TRACE(type);
      ExpectTheOthers(OpenMp4Bytes(renamed));
    }
  }
}

// The boxes before the damage are sufficient.
TEST(IsobmffDamagedTracksTest, TrackWithABrokenBoxAfterAllRequiredOnesIsRead) {
  Movie movie = mp4_boxes::SmallMovie();
  for (Track& track : movie.tracks) track.padding["trak"] = 16;
  mp4_boxes::File built = BuildMp4(movie);
  for (const std::size_t track : {0U, 1U}) {
    const std::size_t begin = mp4_boxes::TrackBegin(built, track);
    const std::size_t size = static_cast<std::size_t>(built.bytes[begin + 2]) << 8 |
                             static_cast<std::size_t>(built.bytes[begin + 3]);
    const Bytes broken = Join({U32(999), Text("udta"), Text("too long")});
    std::copy(broken.begin(), broken.end(),
              built.bytes.begin() + static_cast<std::ptrdiff_t>(begin + size - broken.size()));
  }
  const Mp4FileHandle file = OpenMp4Bytes(built.bytes);
  ASSERT_TRUE(file);
  for (const Track& track : movie.tracks)
    EXPECT_EQ(ReadMp4Track(file, track.id), ExpectedSamples(track)) << track.handler;
}

// The last bytes of the file are a chunk offset of zero. Playback does not need the track, so it
// does not count as incompletely received.
TEST(IsobmffDamagedTracksTest, TimeCodeTrackThatEndsInZerosDoesNotBlockTheFile) {
  for (const bool index_first : {true, false}) {
    Movie movie = mp4_boxes::SmallMovie();
    movie.index_first = index_first;
    Track time_code;
    time_code.id = kDamagedId;
    time_code.handler = "tmcd";
    time_code.entry = Box("tmcd", Zeros(26));
    time_code.samples = mp4_boxes::NumberedSamples(1, 40, 1);
    time_code.replaced["stco"] = Table("stco", {U32(0)});
    movie.tracks.push_back(time_code);
    ExpectTheOthers(OpenMp4Movie(movie));
  }
}

TEST(IsobmffDamagedTracksTest, AudioTrackThatEndsInZerosIsDamagedOnlyIfAnotherBoxFollows) {
  const Damage zeros =
      Replaced("", "stco", Table("stco", {U32(1), U32(2), U32(3), U32(4), U32(0)}));
  for (const std::size_t index : {0U, 1U, 2U}) {
    for (const bool index_first : {true, false}) {
      Movie movie = MovieWith(zeros, index, false);
      movie.index_first = index_first;
      const Mp4FileHandle file = OpenMp4Movie(movie);
      if (index_first || index != 2) {
        ExpectTheOthers(file);
      } else {
        EXPECT_FALSE(file);
      }
    }
  }
}

}  // namespace
}  // namespace stream
