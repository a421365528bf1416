// The transport stream that the demultiplexers are measured with.
#ifndef BENCH_TS_SAMPLE_H_
#define BENCH_TS_SAMPLE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct TsSample {
  std::string description;
  std::vector<std::uint8_t> bytes;
};

// Reads the sample, made with ffmpeg the first time and kept in the build's bench_data directory.
// Says what went wrong on standard error where it cannot be had.
std::optional<TsSample> LoadTsSample();

#endif  // BENCH_TS_SAMPLE_H_
