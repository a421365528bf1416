#include "mp4/mp4_tracks.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>
#include <utility>

#include "mp4/mp4_file_handle.h"

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

// Takes a list of parameter sets, which ends at a size of 0, out of the library's hands.
std::vector<std::vector<std::uint8_t>> TakeParameterSets(std::uint8_t** headers,
                                                         std::uint32_t* sizes) {
  const Mp4Block<std::uint8_t*> header_list(headers);
  const Mp4Block<std::uint32_t> size_list(sizes);
  std::vector<std::vector<std::uint8_t>> sets;
  if (headers == nullptr || sizes == nullptr) return sets;
  for (std::size_t i = 0; sizes[i] != 0; ++i) {
    const Mp4Block<std::uint8_t> header(headers[i]);
    sets.emplace_back(header.get(), header.get() + sizes[i]);
  }
  return sets;
}

}  // namespace

MP4TrackId FindMp4Track(MP4FileHandle file, const char* type) {
  const std::uint32_t count = MP4GetNumberOfTracks(file);
  for (std::uint32_t index = 0; index < count; ++index) {
    const MP4TrackId id = MP4FindTrackId(file, static_cast<std::uint16_t>(index));
    if (id == MP4_INVALID_TRACK_ID) break;
    if (EqualIgnoringCase(TextOrEmpty(MP4GetTrackType(file, id)), type)) return id;
  }
  return MP4_INVALID_TRACK_ID;
}

Mp4VideoTrack DescribeVideoTrack(MP4FileHandle file, MP4TrackId id) {
  Mp4VideoTrack track;
  track.id = id;
  track.codec = CodecName(TextOrEmpty(MP4GetTrackMediaDataName(file, id)));
  // On a track of another codec the call may succeed and leave the pointers untouched.
  std::uint8_t** sps = nullptr;
  std::uint32_t* sps_sizes = nullptr;
  std::uint8_t** pps = nullptr;
  std::uint32_t* pps_sizes = nullptr;
  MP4GetTrackH264SeqPictHeaders(file, id, &sps, &sps_sizes, &pps, &pps_sizes);
  track.has_headers = sps != nullptr;
  track.sps = TakeParameterSets(sps, sps_sizes);
  track.pps = TakeParameterSets(pps, pps_sizes);
  return track;
}

Mp4AudioTrack DescribeAudioTrack(MP4FileHandle file, MP4TrackId id) {
  constexpr std::uint8_t kSbr = 5;
  Mp4AudioTrack track;
  track.id = id;
  track.channels = static_cast<std::uint16_t>(MP4GetTrackAudioChannels(file, id));
  track.sample_rate = MP4GetTrackTimeScale(file, id);
  if (MP4GetTrackAudioMpeg4Type(file, id) == kSbr) track.sample_rate /= 2;
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
