// A long sample that lies in memory whole.
#ifndef BENCH_MEMORY_SAMPLE_H_
#define BENCH_MEMORY_SAMPLE_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "bench/looped_sample.h"

struct MemorySample {
  std::string description;  // with the size
  std::vector<std::uint8_t> bytes;
};

// Reads the file `name` of the build's bench_data directory, made with ffmpeg the first time and
// kept. Says what went wrong on standard error where it cannot be had.
std::optional<MemorySample> LoadMemorySample(const LoopedSample& sample, const std::string& name,
                                             const std::string& description);

// What the samples that demultiplexers are measured with are made of: twenty seconds, thirty times.
inline LoopedSample PicturesAndSound(const std::string& suffix) {
  constexpr int kRepeats = 29;
  return {
      "-f lavfi -i testsrc2=size=1280x720:rate=25:duration=20"
      " -f lavfi -i sine=frequency=440:sample_rate=48000:duration=20"
      " -c:v libx264 -preset veryfast -bf 2 -g 50 -b:v 5M -minrate 5M -maxrate 5M -bufsize 2M"
      " -pix_fmt yuv420p -c:a aac -b:a 128k",
      suffix, kRepeats};
}

#endif  // BENCH_MEMORY_SAMPLE_H_
