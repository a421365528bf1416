// Long samples for the benchmarks. ffmpeg encodes a short part; a second run repeats it by copying
// its streams, so that the timestamps continue as in one long recording.
#ifndef BENCH_LOOPED_SAMPLE_H_
#define BENCH_LOOPED_SAMPLE_H_

#include <filesystem>
#include <string>

struct LoopedSample {
  std::string encode;  // ffmpeg's options for the part, from inputs to codecs
  std::string suffix;  // file extension with its dot; also selects the format for ffmpeg
  int repeats = 0;     // how often the part follows the first one
};

// Makes the file unless it exists. Reports failures on standard error.
bool HaveLoopedSample(const LoopedSample& sample, const std::filesystem::path& path);

#endif  // BENCH_LOOPED_SAMPLE_H_
