#include "mp4/mp4_tracks.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <string_view>
#include <utility>

#include "mp4/audio_specific_config.h"
#include "mp4/mp4_file_handle.h"

namespace stream {
namespace {

bool EqualIgnoringCase(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](unsigned char x, unsigned char y) {
    return std::tolower(x) == std::tolower(y);
  });
}

std::string TextOrEmpty(const char* text) { return text == nullptr ? std::string() : text; }

std::string CodecName(const std::string& sample_entry) {
  if (sample_entry == "avc1") return "H264";
  if (sample_entry == "hvc1") return "H265";
  return sample_entry;
}

// A list of parameter sets as the library returns it, ended by a size of 0. The destructor frees
// both blocks and everything that they list, even if there was no memory for a copy.
struct ParameterSetList {
  ParameterSetList() = default;
  ParameterSetList(const ParameterSetList&) = delete;
  ParameterSetList& operator=(const ParameterSetList&) = delete;
  ~ParameterSetList() {
    for (std::size_t i = 0, count = Count(); i < count; ++i) Mp4Freer()(sets[i]);
    const Mp4Block<std::uint8_t*> set_list(sets);
    const Mp4Block<std::uint32_t> size_list(sizes);
  }

  std::size_t Count() const {
    std::size_t count = 0;
    while (sets != nullptr && sizes != nullptr && sizes[count] != 0) ++count;
    return count;
  }

  std::vector<std::vector<std::uint8_t>> Copy() const {
    std::vector<std::vector<std::uint8_t>> copies;
    for (std::size_t i = 0, count = Count(); i < count; ++i) {
      copies.emplace_back(sets[i], sets[i] + sizes[i]);
    }
    return copies;
  }

  std::uint8_t** sets = nullptr;
  std::uint32_t* sizes = nullptr;
};

constexpr std::uint8_t kNoMpeg4Audio = 0;

// The channel configuration of the AudioSpecificConfig; 0 if there is none that fits in an ADTS
// header. Preferred to the sample entry, where most files have 2, however many channels there are.
std::uint16_t ConfiguredChannels(MP4FileHandle file, MP4TrackId id) {
  constexpr std::uint32_t kMax = 7;
  std::uint8_t* bytes = nullptr;
  std::uint32_t size = 0;
  if (!MP4GetTrackESConfiguration(file, id, &bytes, &size)) return 0;
  const Mp4Block<std::uint8_t> owner(bytes);
  const auto config = ParseAudioSpecificConfig({bytes, size});
  if (!config || config->channel_configuration > kMax) return 0;
  return static_cast<std::uint16_t>(config->channel_configuration);
}

std::string SampleEntryName(MP4FileHandle file, MP4TrackId id) {
  return TextOrEmpty(MP4GetTrackMediaDataName(file, id));
}

// Returns whether a track has a sample entry and a time scale.
bool CanBeRead(MP4FileHandle file, MP4TrackId id) {
  return !SampleEntryName(file, id).empty() && MP4GetTrackTimeScale(file, id) != 0;
}

// Returns false for a track without samples or, in H.264, without parameter sets. A codec that is
// not supported is not damage: such a track is found, and refused later.
bool CanBePlayed(MP4FileHandle file, MP4TrackId id) {
  if (MP4GetSampleTime(file, id, 1) == MP4_INVALID_TIMESTAMP) return false;
  const std::string name = SampleEntryName(file, id);
  return (name != "avc1" && name != "avc3") || DescribeVideoTrack(file, id).has_headers;
}

}  // namespace

MP4TrackId FindMp4Track(MP4FileHandle file, const char* type) {
  constexpr int kMaxUnplayable = 16;  // the tables of each are loaded
  MP4TrackId first = MP4_INVALID_TRACK_ID;
  int unplayable = 0;
  const std::uint32_t count = MP4GetNumberOfTracks(file);
  for (std::uint32_t index = 0; index < count && unplayable < kMaxUnplayable; ++index) {
    const MP4TrackId id = MP4FindTrackId(file, static_cast<std::uint16_t>(index));
    if (id == MP4_INVALID_TRACK_ID) break;
    if (!EqualIgnoringCase(TextOrEmpty(MP4GetTrackType(file, id)), type) || !CanBeRead(file, id))
      continue;
    if (CanBePlayed(file, id)) return id;
    if (first == MP4_INVALID_TRACK_ID) first = id;
    ++unplayable;
  }
  return first;
}

Mp4VideoTrack DescribeVideoTrack(MP4FileHandle file, MP4TrackId id) {
  Mp4VideoTrack track;
  track.id = id;
  track.codec = CodecName(SampleEntryName(file, id));
  if (track.codec.empty()) return track;  // without a name, an installed libmp4v2 crashes below
  // For a track of another codec, the call may succeed and leave the pointers untouched.
  ParameterSetList sps;
  ParameterSetList pps;
  MP4GetTrackH264SeqPictHeaders(file, id, &sps.sets, &sps.sizes, &pps.sets, &pps.sizes);
  track.has_headers = sps.sets != nullptr;
  track.sps = sps.Copy();
  track.pps = pps.Copy();
  return track;
}

Mp4AudioTrack DescribeAudioTrack(MP4FileHandle file, MP4TrackId id) {
  constexpr std::uint8_t kSbr = 5;
  constexpr std::uint8_t kPs = 29;
  const std::uint8_t type = MP4GetTrackAudioMpeg4Type(file, id);
  Mp4AudioTrack track;
  track.id = id;
  track.channels = type == kNoMpeg4Audio ? std::uint16_t{0} : ConfiguredChannels(file, id);
  if (track.channels == 0)
    track.channels = static_cast<std::uint16_t>(MP4GetTrackAudioChannels(file, id));
  track.sample_rate = MP4GetTrackTimeScale(file, id);
  if (type == kSbr || type == kPs) track.sample_rate /= 2;
  return track;
}

float Mp4DurationSeconds(MP4FileHandle file) {
  const std::uint64_t ms = Mp4Milliseconds(MP4GetDuration(file), MP4GetTimeScale(file));
  return static_cast<float>(static_cast<double>(ms) / 1000.0);
}

void SetSamplingFrequencyIndex(AdtsFields& fields, std::uint32_t rate) {
  constexpr std::array<std::pair<std::uint32_t, std::uint16_t>, 9> kIndexes = {{{48000, 3},
                                                                                {44100, 4},
                                                                                {32000, 5},
                                                                                {24000, 6},
                                                                                {22050, 7},
                                                                                {16000, 8},
                                                                                {12000, 9},
                                                                                {11025, 10},
                                                                                {8000, 11}}};
  for (const auto& [known_rate, index] : kIndexes) {
    if (rate == known_rate) fields.sampling_frequency_index = index;
  }
}

}  // namespace stream
