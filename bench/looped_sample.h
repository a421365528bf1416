// Long samples for the benchmarks: a short part encoded by ffmpeg, played again and again by a
// second run that copies its streams, so that the timestamps run on as those of one long recording
// would.
#ifndef BENCH_LOOPED_SAMPLE_H_
#define BENCH_LOOPED_SAMPLE_H_

#include <filesystem>
#include <string>

struct LoopedSample {
  std::string encode;  // ffmpeg's options for the part, from the inputs to the codecs
  std::string suffix;  // of the file's name, with its dot; tells ffmpeg the format too
  int repeats = 0;     // of the part, behind the first time
};

// Makes the file where it is not there yet. Says what went wrong on standard error.
bool HaveLoopedSample(const LoopedSample& sample, const std::filesystem::path& path);

#endif  // BENCH_LOOPED_SAMPLE_H_
