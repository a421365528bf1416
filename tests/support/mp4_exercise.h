// Reads everything that <mp4v2/mp4v2.h> offers about an MP4 file. For the fuzzer and for tests of
// malformed files: the results are counted, not checked.
#ifndef TESTS_SUPPORT_MP4_EXERCISE_H_
#define TESTS_SUPPORT_MP4_EXERCISE_H_

#include <mp4v2/mp4v2.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace stream {

struct Mp4Exercise {
  std::uint16_t tracks = 0;
  std::size_t samples = 0;
  std::size_t largest_sample = 0;
};

namespace mp4_exercise {

// Reads every byte, so that a sanitizer reports bytes outside the block.
inline std::size_t Touch(const std::uint8_t* bytes, std::size_t size) {
  std::size_t sum = 0;
  for (std::size_t i = 0; i < size; ++i) sum += bytes[i];
  volatile std::size_t kept = sum;
  static_cast<void>(kept);
  return size;
}

inline void FreeList(std::uint8_t** blocks, std::uint32_t* sizes) {
  for (std::size_t i = 0; sizes != nullptr && sizes[i] != 0; ++i) {
    Touch(blocks[i], sizes[i]);
    MP4Free(blocks[i]);
  }
  MP4Free(blocks);
  MP4Free(sizes);
}

inline void ReadProperties(MP4FileHandle file, MP4TrackId track) {
  MP4GetTrackType(file, track);
  MP4GetTrackMediaDataName(file, track);
  MP4GetTrackTimeScale(file, track);
  MP4GetTrackAudioMpeg4Type(file, track);
  MP4GetTrackAudioChannels(file, track);
  std::uint8_t** sequence = nullptr;
  std::uint8_t** picture = nullptr;
  std::uint32_t* sequence_sizes = nullptr;
  std::uint32_t* picture_sizes = nullptr;
  MP4GetTrackH264SeqPictHeaders(file, track, &sequence, &sequence_sizes, &picture, &picture_sizes);
  FreeList(sequence, sequence_sizes);
  FreeList(picture, picture_sizes);
  std::uint8_t* config = nullptr;
  std::uint32_t config_size = 0;
  MP4GetTrackESConfiguration(file, track, &config, &config_size);
  Touch(config, config_size);
  MP4Free(config);
}

inline bool ReadSample(MP4FileHandle file, MP4TrackId track, MP4SampleId sample,
                       Mp4Exercise& result) {
  std::uint8_t* bytes = nullptr;
  std::uint32_t size = 0;
  MP4Timestamp start = 0;
  MP4Duration duration = 0;
  MP4Duration composition = 0;
  bool sync = false;
  MP4GetSampleTime(file, track, sample);
  MP4GetSampleFileOffset(file, track, sample);
  if (!MP4ReadSample(file, track, sample, &bytes, &size, &start, &duration, &composition, &sync))
    return false;
  result.samples += 1;
  result.largest_sample = std::max(result.largest_sample, Touch(bytes, size));
  MP4Free(bytes);
  return true;
}

}  // namespace mp4_exercise

inline Mp4Exercise ExerciseMp4(const char* path) {
  constexpr MP4SampleId kMaxSamples = 100;  // of each track
  Mp4Exercise result;
  MP4FileHandle file = MP4Read(path);
  if (file == nullptr) return result;
  MP4GetTimeScale(file);
  MP4GetDuration(file);
  while (const MP4TrackId track = MP4FindTrackId(file, result.tracks)) {
    ++result.tracks;
    mp4_exercise::ReadProperties(file, track);
    MP4SampleId sample = 1;
    while (sample <= kMaxSamples && mp4_exercise::ReadSample(file, track, sample, result)) ++sample;
    Mp4Exercise elsewhere;
    for (const MP4SampleId other : {0U, sample + 1, 0x10000U, 0x7FFFFFFFU, 0xFFFFFFFFU, 3U})
      mp4_exercise::ReadSample(file, track, other, elsewhere);
  }
  MP4Close(file);
  return result;
}

}  // namespace stream

#endif  // TESTS_SUPPORT_MP4_EXERCISE_H_
