// The properties of a file and of its tracks.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/support/mp4_reading.h"

namespace stream {
namespace {

using mp4_boxes::AudioSampleEntry;
using mp4_boxes::AvcC;
using mp4_boxes::Box;
using mp4_boxes::Bytes;
using mp4_boxes::Esds;
using mp4_boxes::Join;
using mp4_boxes::kAacLc48000Stereo;
using mp4_boxes::kPps;
using mp4_boxes::kSps;
using mp4_boxes::Movie;
using mp4_boxes::Table;
using mp4_boxes::Text;
using mp4_boxes::U16;
using mp4_boxes::U32;
using mp4_boxes::U64;
using mp4_boxes::VideoEntry;
using mp4_boxes::Zeros;
using testing::ElementsAre;

// SmallMovie with another sample entry for its video or audio track.
Mp4FileHandle WithVideo(const Bytes& entry) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.tracks[0].entry = entry;
  return OpenMp4Movie(movie);
}
Mp4FileHandle WithAudio(const Bytes& entry) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.tracks[1].entry = entry;
  return OpenMp4Movie(movie);
}

struct ParameterSets {
  bool result = false;
  bool touched = false;
  std::vector<Bytes> sequence;
  std::vector<Bytes> picture;
};

// Copies a list that ends with a size of 0, and frees it.
std::vector<Bytes> CopyAndFreeList(std::uint8_t** blocks, std::uint32_t* sizes) {
  std::vector<Bytes> list;
  for (std::size_t i = 0; sizes[i] != 0; ++i) {
    list.emplace_back(blocks[i], blocks[i] + sizes[i]);
    MP4Free(blocks[i]);
  }
  MP4Free(blocks);
  MP4Free(sizes);
  return list;
}

ParameterSets SetsOf(const Mp4FileHandle& file, MP4TrackId track) {
  std::uint8_t** sequence = nullptr;
  std::uint8_t** picture = nullptr;
  std::uint32_t* sequence_sizes = nullptr;
  std::uint32_t* picture_sizes = nullptr;
  ParameterSets sets;
  sets.result = MP4GetTrackH264SeqPictHeaders(file.get(), track, &sequence, &sequence_sizes,
                                              &picture, &picture_sizes);
  sets.touched = sequence != nullptr;
  if (!sets.touched) return sets;
  sets.sequence = CopyAndFreeList(sequence, sequence_sizes);
  sets.picture = CopyAndFreeList(picture, picture_sizes);
  return sets;
}

std::pair<bool, Bytes> ConfigurationOf(const Mp4FileHandle& file, MP4TrackId track) {
  std::uint8_t other = 0;
  std::uint8_t* config = &other;
  std::uint32_t size = 99;
  const bool result = MP4GetTrackESConfiguration(file.get(), track, &config, &size);
  EXPECT_NE(config, &other);
  const Mp4Block<std::uint8_t> owner(config);
  return {result, Bytes(config, config + size)};
}

TEST(IsobmffTracksTest, MovieHeader) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.time_scale = 600;
  movie.duration = 12345;
  const Mp4FileHandle file = OpenMp4Movie(movie);
  EXPECT_EQ(MP4GetTimeScale(file.get()), 600U);
  EXPECT_EQ(MP4GetDuration(file.get()), 12345U);
}

TEST(IsobmffTracksTest, TracksAreFoundByIndexAndType) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.tracks.push_back(movie.tracks[0]);
  movie.tracks[2].id = 7;
  const Mp4FileHandle file = OpenMp4Movie(movie);
  EXPECT_EQ(MP4GetNumberOfTracks(file.get()), 3U);
  EXPECT_EQ(MP4GetNumberOfTracks(file.get(), "vide"), 2U);
  EXPECT_EQ(MP4GetNumberOfTracks(file.get(), "soun", 0x40), 1U);
  EXPECT_EQ(MP4GetNumberOfTracks(file.get(), "soun", 0x6B), 0U);
  EXPECT_EQ(MP4FindTrackId(file.get(), 0), 1U);
  EXPECT_EQ(MP4FindTrackId(file.get(), 1), 2U);
  EXPECT_EQ(MP4FindTrackId(file.get(), 2), 7U);
  EXPECT_EQ(MP4FindTrackId(file.get(), 3), 0U);
  EXPECT_EQ(MP4FindTrackId(file.get(), 1, "vide"), 7U);
  EXPECT_EQ(MP4FindTrackId(file.get(), 0, "text"), 0U);
}

TEST(IsobmffTracksTest, TypeNameAndTimeScale) {
  const Mp4FileHandle file = OpenMp4Movie(mp4_boxes::SmallMovie());
  EXPECT_STREQ(MP4GetTrackType(file.get(), 1), "vide");
  EXPECT_STREQ(MP4GetTrackMediaDataName(file.get(), 1), "avc1");
  EXPECT_EQ(MP4GetTrackTimeScale(file.get(), 1), 12800U);
  EXPECT_STREQ(MP4GetTrackType(file.get(), 2), "soun");
  EXPECT_STREQ(MP4GetTrackMediaDataName(file.get(), 2), "mp4a");
  EXPECT_EQ(MP4GetTrackTimeScale(file.get(), 2), 48000U);
}

TEST(IsobmffTracksTest, PropertiesOfMissingTracksAndFilesAreInvalid) {
  const Mp4FileHandle opened = OpenMp4Movie(mp4_boxes::SmallMovie());
  for (const Mp4FileHandle* const file : {&opened, static_cast<const Mp4FileHandle*>(nullptr)}) {
    void* const handle = file == nullptr ? nullptr : file->get();
    EXPECT_EQ(MP4GetTrackType(handle, 9), nullptr);
    EXPECT_EQ(MP4GetTrackMediaDataName(handle, 9), nullptr);
    EXPECT_EQ(MP4GetTrackTimeScale(handle, 9), 0U);
    EXPECT_EQ(MP4GetTrackAudioChannels(handle, 9), -1);
    EXPECT_EQ(MP4GetTrackAudioMpeg4Type(handle, 9), 0);
    EXPECT_EQ(MP4GetSampleTime(handle, 9, 1), MP4_INVALID_TIMESTAMP);
    EXPECT_EQ(MP4GetSampleFileOffset(handle, 9, 1), UINT64_MAX);
  }
  EXPECT_EQ(MP4GetTimeScale(nullptr), 0U);
  EXPECT_EQ(MP4GetDuration(nullptr), MP4_INVALID_DURATION);
  EXPECT_EQ(MP4GetNumberOfTracks(nullptr), 0U);
  EXPECT_EQ(MP4FindTrackId(nullptr, 0), 0U);
  EXPECT_FALSE(ReadMp4(Mp4FileHandle(), 1, 1));
  EXPECT_FALSE(SetsOf(opened, 9).result);
  EXPECT_EQ(ConfigurationOf(opened, 9), std::pair(false, Bytes()));
  MP4Close(nullptr);
  MP4Free(nullptr);
}

// --- Parameter sets ---

TEST(IsobmffTracksTest, ParameterSetsOfAvc1AndAvc3) {
  for (const char* const name : {"avc1", "avc3"}) {
    const Bytes second = {0x67, 1, 2};
    const ParameterSets sets = SetsOf(WithVideo(VideoEntry(name, AvcC({kSps, second}, {kPps}))), 1);
    EXPECT_TRUE(sets.result);
    EXPECT_THAT(sets.sequence, ElementsAre(kSps, second));
    EXPECT_THAT(sets.picture, ElementsAre(kPps));
  }
}

TEST(IsobmffTracksTest, EmptyParameterSetDoesNotEndTheList) {
  const Mp4FileHandle file = WithVideo(VideoEntry("avc1", AvcC({{}, kSps}, {kPps, {}})));
  const ParameterSets sets = SetsOf(file, 1);
  EXPECT_THAT(sets.sequence, ElementsAre(kSps));
  EXPECT_THAT(sets.picture, ElementsAre(kPps));
}

TEST(IsobmffTracksTest, TruncatedParameterSetIsSkipped) {
  Bytes avc = AvcC({kSps}, {kPps});
  avc.pop_back();
  avc[3] = static_cast<std::uint8_t>(avc.size());
  const ParameterSets sets = SetsOf(WithVideo(VideoEntry("avc1", avc)), 1);
  EXPECT_TRUE(sets.result);
  EXPECT_THAT(sets.sequence, ElementsAre(kSps));
  EXPECT_THAT(sets.picture, ElementsAre());
}

TEST(IsobmffTracksTest, OtherTracksReturnTrueAndLeaveTheListsUnchanged) {
  for (const char* const name : {"hvc1", "hev1", "mp4v", "encv"}) {
    const ParameterSets sets = SetsOf(WithVideo(VideoEntry(name, AvcC({kSps}, {kPps}))), 1);
    EXPECT_TRUE(sets.result) << name;
    EXPECT_FALSE(sets.touched) << name;
  }
  const ParameterSets audio = SetsOf(OpenMp4Movie(mp4_boxes::SmallMovie()), 2);
  EXPECT_TRUE(audio.result);
  EXPECT_FALSE(audio.touched);
}

TEST(IsobmffTracksTest, H264WithoutConfigurationHasNoParameterSets) {
  const ParameterSets sets = SetsOf(WithVideo(VideoEntry("avc1", {})), 1);
  EXPECT_FALSE(sets.result);
  EXPECT_FALSE(sets.touched);
}

TEST(IsobmffTracksTest, TrackWithoutSampleEntryHasNoName) {
  Movie movie = mp4_boxes::SmallMovie();
  movie.tracks[0].replaced["stsd"] = Table("stsd", {});
  const Mp4FileHandle file = OpenMp4Movie(movie);
  ASSERT_TRUE(file);
  EXPECT_STREQ(MP4GetTrackMediaDataName(file.get(), 1), "");
}

// --- Audio ---

TEST(IsobmffTracksTest, AudioOfAac) {
  const Mp4FileHandle file = OpenMp4Movie(mp4_boxes::SmallMovie());
  EXPECT_EQ(MP4GetTrackAudioMpeg4Type(file.get(), 2), 2);
  EXPECT_EQ(MP4GetTrackAudioChannels(file.get(), 2), 2);
  EXPECT_EQ(ConfigurationOf(file, 2), std::pair(true, kAacLc48000Stereo));
}

TEST(IsobmffTracksTest, VideoHasNoAudioProperties) {
  const Mp4FileHandle file = OpenMp4Movie(mp4_boxes::SmallMovie());
  EXPECT_EQ(MP4GetTrackAudioMpeg4Type(file.get(), 1), 0);
  EXPECT_EQ(MP4GetTrackAudioChannels(file.get(), 1), -1);
  EXPECT_EQ(ConfigurationOf(file, 1), std::pair(false, Bytes()));
}

TEST(IsobmffTracksTest, DescriptorSizesOfUpToFourBytes) {
  for (int bytes = 1; bytes <= 4; ++bytes) {
    const Mp4FileHandle file =
        WithAudio(AudioSampleEntry("mp4a", 6, Esds(0x40, {0x2B, 0x92}, bytes)));
    EXPECT_EQ(ConfigurationOf(file, 2), std::pair(true, Bytes({0x2B, 0x92})));
    EXPECT_EQ(MP4GetTrackAudioMpeg4Type(file.get(), 2), 5);  // SBR
    EXPECT_EQ(MP4GetTrackAudioChannels(file.get(), 2), 6);
  }
}

TEST(IsobmffTracksTest, AudioObjectTypeAbove31) {
  const Mp4FileHandle file = WithAudio(AudioSampleEntry("mp4a", 2, Esds(0x40, {0xF9, 0x40, 0x00})));
  EXPECT_EQ(MP4GetTrackAudioMpeg4Type(file.get(), 2), 42);
  const Mp4FileHandle cut_off = WithAudio(AudioSampleEntry("mp4a", 2, Esds(0x40, {0xF9})));
  EXPECT_EQ(MP4GetTrackAudioMpeg4Type(cut_off.get(), 2), 0);
}

TEST(IsobmffTracksTest, Mp3HasNoMpeg4Type) {
  const Mp4FileHandle file = WithAudio(AudioSampleEntry("mp4a", 2, Esds(0x6B, {})));
  EXPECT_EQ(MP4GetTrackAudioMpeg4Type(file.get(), 2), 0);
  EXPECT_EQ(ConfigurationOf(file, 2), std::pair(false, Bytes()));
  EXPECT_EQ(MP4GetNumberOfTracks(file.get(), "soun", 0x6B), 1U);
}

TEST(IsobmffTracksTest, OptionalFieldsOfTheStreamDescriptorAreSkipped) {
  const Bytes decoder =
      Join({{0x40, 0x15}, Zeros(11), mp4_boxes::Descriptor(5, kAacLc48000Stereo)});
  const Bytes stream =
      Join({U16(1), {0xE0}, U16(5), {3}, Text("url"), U16(6), mp4_boxes::Descriptor(4, decoder)});
  const Bytes esds = mp4_boxes::FullBox("esds", 0, mp4_boxes::Descriptor(3, stream));
  EXPECT_EQ(ConfigurationOf(WithAudio(AudioSampleEntry("mp4a", 2, esds)), 2),
            std::pair(true, kAacLc48000Stereo));
}

TEST(IsobmffTracksTest, MalformedStreamDescriptorIsSkipped) {
  const Bytes whole = Esds(0x40, kAacLc48000Stereo);
  for (std::size_t size = 8; size + 3 < whole.size(); ++size) {  // without the last descriptor
    Bytes cut(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    cut[3] = static_cast<std::uint8_t>(size);
    const Mp4FileHandle file = WithAudio(AudioSampleEntry("mp4a", 2, cut));
    ASSERT_TRUE(file);
    EXPECT_EQ(ConfigurationOf(file, 2), std::pair(false, Bytes())) << size;
    EXPECT_EQ(MP4GetTrackAudioMpeg4Type(file.get(), 2), 0) << size;
  }
}

// --- QuickTime ---

Bytes QuickTimeEntry(unsigned version, unsigned channels, const Bytes& added,
                     const Bytes& children) {
  return Box("mp4a", Join({Zeros(6), U16(1), U16(version), Zeros(6), U16(channels), U16(16),
                           Zeros(4), U32(48000U << 16), added, children}));
}

// The descriptor follows other boxes, and a box of type 0 ends the list.
Bytes Wave() {
  return Box("wave", Join({Box("frma", Text("mp4a")), Box("mp4a", Zeros(4)),
                           Esds(0x40, kAacLc48000Stereo), U32(8), U32(0)}));
}

TEST(IsobmffTracksTest, QuickTimeSoundVersion1) {
  const Mp4FileHandle file = WithAudio(QuickTimeEntry(1, 2, Zeros(16), Wave()));
  EXPECT_EQ(MP4GetTrackAudioChannels(file.get(), 2), 2);
  EXPECT_EQ(ConfigurationOf(file, 2), std::pair(true, kAacLc48000Stereo));
}

TEST(IsobmffTracksTest, QuickTimeSoundVersion2) {
  const Bytes added = Join({U32(72), U64(0x40E7700000000000), U32(6), U32(0x7F000000), U32(16),
                            U32(0), U32(0), U32(1024)});
  const Mp4FileHandle file = WithAudio(QuickTimeEntry(2, 3, added, Wave()));
  EXPECT_EQ(MP4GetTrackAudioChannels(file.get(), 2), 6);
  EXPECT_EQ(ConfigurationOf(file, 2), std::pair(true, kAacLc48000Stereo));
}

// In a sample description of version 1, the version of an entry has its ISO meaning and adds no
// fields.
TEST(IsobmffTracksTest, IsoSoundVersion1) {
  Movie movie = mp4_boxes::SmallMovie();
  const Bytes entry = QuickTimeEntry(1, 2, {}, Esds(0x40, kAacLc48000Stereo));
  movie.tracks[1].replaced["stsd"] = Table("stsd", {entry}, 1);
  EXPECT_EQ(ConfigurationOf(OpenMp4Movie(movie), 2), std::pair(true, kAacLc48000Stereo));
}

}  // namespace
}  // namespace stream
