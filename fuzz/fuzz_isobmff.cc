// Arbitrary bytes as an MP4 file. Nothing is read out of bounds or leaked. A sample is the same
// whether or not the samples before it were read, and whether or not another handle has the file
// open.
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "mp4/mp4_tracks.h"
#include "tests/support/mp4_exercise.h"
#include "tests/support/mp4_reading.h"

namespace stream {
namespace {

constexpr MP4SampleId kMaxSamples = 300;

// Ends the process, which libFuzzer reports as a crash.
void Require(bool condition) {
  if (!condition) std::abort();
}

// A file in memory that has a path.
class MemoryFile {
 public:
  MemoryFile(const std::uint8_t* data, std::size_t size)
      : descriptor_(memfd_create("fuzz", MFD_CLOEXEC)) {
    Require(descriptor_ >= 0 && write(descriptor_, data, size) == static_cast<ssize_t>(size));
    path_ = "/proc/self/fd/" + std::to_string(descriptor_);
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  const char* Path() const { return path_.c_str(); }

 private:
  const int descriptor_;
  std::string path_;
};

struct SampleAnswer {
  MP4TrackId track;
  MP4SampleId sample;
  MP4Timestamp time;
  std::uint64_t offset;
  std::optional<ReadMp4Sample> read;

  bool operator==(const SampleAnswer&) const = default;
};

SampleAnswer QuerySample(const Mp4FileHandle& file, MP4TrackId track, MP4SampleId sample) {
  return {track, sample, MP4GetSampleTime(file.get(), track, sample),
          MP4GetSampleFileOffset(file.get(), track, sample), ReadMp4(file, track, sample)};
}

std::vector<SampleAnswer> QueryInOrder(const Mp4FileHandle& file) {
  std::vector<SampleAnswer> all;
  const std::uint32_t tracks = MP4GetNumberOfTracks(file.get());
  for (std::uint16_t i = 0; i < tracks; ++i) {
    const MP4TrackId track = MP4FindTrackId(file.get(), i);
    for (MP4SampleId sample = 1; sample <= kMaxSamples; ++sample) {
      all.push_back(QuerySample(file, track, sample));
      if (!all.back().read) break;
    }
  }
  return all;
}

void QueryAgain(const char* path, const std::vector<SampleAnswer>& all) {
  const Mp4FileHandle file(MP4Read(path));
  Require(file != nullptr);
  for (const SampleAnswer& answer : all)
    Require(QuerySample(file, answer.track, answer.sample) == answer);
}

// What the pipeline reads before it reads samples.
void DescribeTracks(const Mp4FileHandle& file) {
  const MP4TrackId video = FindMp4Track(file.get(), "vide");
  const MP4TrackId audio = FindMp4Track(file.get(), "soun");
  if (video != MP4_INVALID_TRACK_ID) Require(!DescribeVideoTrack(file.get(), video).codec.empty());
  if (audio != MP4_INVALID_TRACK_ID) DescribeAudioTrack(file.get(), audio);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const MemoryFile memory(data, size);
  const Mp4Exercise result = ExerciseMp4(memory.Path());
  Require(result.largest_sample <= size);
  Mp4FileHandle file(MP4Read(memory.Path()));
  if (file == nullptr) return 0;
  DescribeTracks(file);
  std::vector<SampleAnswer> all = QueryInOrder(file);
  std::reverse(all.begin(), all.end());
  QueryAgain(memory.Path(), all);  // uses the index shared with `file`
  file.reset();
  QueryAgain(memory.Path(), all);
  return 0;
}

}  // namespace stream
