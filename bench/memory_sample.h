// A long sample, loaded into memory.
#ifndef BENCH_MEMORY_SAMPLE_H_
#define BENCH_MEMORY_SAMPLE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bench/looped_sample.h"

struct MemorySample {
  std::string description;  // including the size
  std::vector<std::uint8_t> bytes;
};

// Reads the file `name` in the build's bench_data directory, which ffmpeg makes at the first use.
// Reports failures on standard error.
std::optional<MemorySample> LoadMemorySample(const LoopedSample& sample, const std::string& name,
                                             const std::string& description);

// The content of the samples for the demultiplexer benchmarks: twenty seconds, thirty times.
inline LoopedSample VideoAndAudio(const std::string& suffix) {
  constexpr int kRepeats = 29;
  return {
      "-f lavfi -i testsrc2=size=1280x720:rate=25:duration=20"
      " -f lavfi -i sine=frequency=440:sample_rate=48000:duration=20"
      " -c:v libx264 -preset veryfast -bf 2 -g 50 -b:v 5M -minrate 5M -maxrate 5M -bufsize 2M"
      " -pix_fmt yuv420p -c:a aac -b:a 128k",
      suffix, kRepeats};
}

#endif  // BENCH_MEMORY_SAMPLE_H_
