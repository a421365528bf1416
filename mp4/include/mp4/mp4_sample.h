// A sample of an MP4 track, and its conversion into frames in the global frame queues.
#ifndef MP4_MP4_SAMPLE_H_
#define MP4_MP4_SAMPLE_H_

#include <cstdint>
#include <span>
#include <vector>

#include "common/adts.h"
#include "mp4/mp4_file_handle.h"

namespace stream {

// Times in milliseconds.
struct Mp4Sample {
  Mp4Block<std::uint8_t> bytes;  // owned
  std::uint32_t size = 0;
  std::uint64_t time = 0;             // decode time, from the time tables
  std::uint64_t start = 0;            // decode time, as returned with the sample's bytes
  std::int64_t rendering_offset = 0;  // presentation time minus decode time

  // Returns 0 if the time would be negative.
  std::uint64_t PresentationTime() const;
};

struct Mp4ParameterSets {
  std::vector<std::uint8_t> sps;  // without start codes; empty until known
  std::vector<std::uint8_t> pps;
};

// Returns whether a video frame was queued since the pipeline was started, delivered or not.
bool Mp4VideoHasBegun();

// Queues the NAL units of a video sample, each as a frame with a start code instead of its length.
// The first video frame is an IDR slice, SEI or SPS, with the parameter sets before it. Until it is
// queued, units of other types are dropped. Returns whether this sample contained the first frame.
// A unit that exceeds the sample is dropped. A stop interrupts only a sample with very many units.
bool EmitMp4Video(const Mp4Sample& sample, const Mp4ParameterSets& parameter_sets);

// Queues an audio sample after an ADTS header.
void EmitMp4Audio(const Mp4Sample& sample, const AdtsFields& fields);

}  // namespace stream

#endif  // MP4_MP4_SAMPLE_H_
