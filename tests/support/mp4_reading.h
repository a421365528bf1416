// Reads MP4 files through <mp4v2/mp4v2.h> in a test: handles that close themselves, and samples as
// values.
#ifndef TESTS_SUPPORT_MP4_READING_H_
#define TESTS_SUPPORT_MP4_READING_H_

#include <mp4v2/mp4v2.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "mp4/mp4_file_handle.h"
#include "tests/support/mp4_boxes.h"

namespace stream {

struct ReadMp4Sample {
  mp4_boxes::Bytes data;
  MP4Timestamp start = 0;
  MP4Duration duration = 0;
  MP4Duration composition = 0;
  bool sync = false;

  bool operator==(const ReadMp4Sample&) const = default;
};

inline void PrintTo(const ReadMp4Sample& sample, std::ostream* out) {
  *out << sample.data.size() << " bytes, start " << sample.start << ", duration " << sample.duration
       << ", composition " << sample.composition << (sample.sync ? ", sync" : "");
}

inline std::optional<ReadMp4Sample> ReadMp4(const Mp4FileHandle& file, MP4TrackId track,
                                            MP4SampleId id) {
  std::uint8_t* bytes = nullptr;
  std::uint32_t size = 0;
  ReadMp4Sample sample;
  if (!MP4ReadSample(file.get(), track, id, &bytes, &size, &sample.start, &sample.duration,
                     &sample.composition, &sample.sync)) {
    return std::nullopt;
  }
  const Mp4Block<std::uint8_t> owner(bytes);
  sample.data.assign(bytes, bytes + size);
  return sample;
}

// Every sample up to the first that cannot be read.
inline std::vector<ReadMp4Sample> ReadMp4Track(const Mp4FileHandle& file, MP4TrackId track) {
  std::vector<ReadMp4Sample> samples;
  while (auto sample = ReadMp4(file, track, static_cast<MP4SampleId>(samples.size() + 1)))
    samples.push_back(*std::move(sample));
  return samples;
}

// The samples that must be read from a track of BuildMp4.
inline std::vector<ReadMp4Sample> ExpectedSamples(const mp4_boxes::Track& track) {
  std::vector<ReadMp4Sample> samples;
  MP4Timestamp start = 0;
  for (const mp4_boxes::Sample& sample : track.samples) {
    samples.push_back({sample.data, start, sample.duration,
                       static_cast<std::uint32_t>(sample.composition), sample.sync});
    start += sample.duration;
  }
  return samples;
}

// Writes the file into the test's directory and opens it. Null if it has no complete index.
inline Mp4FileHandle OpenMp4Bytes(const mp4_boxes::Bytes& bytes,
                                  const std::string& path = "movie.mp4") {
  mp4_boxes::WriteFile(path, bytes);
  return Mp4FileHandle(MP4Read(path.c_str()));
}

inline Mp4FileHandle OpenMp4Movie(const mp4_boxes::Movie& movie) {
  return OpenMp4Bytes(mp4_boxes::BuildMp4(movie).bytes);
}

}  // namespace stream

#endif  // TESTS_SUPPORT_MP4_READING_H_
