// A sample of an MP4 track, and how it becomes frames in the global frame queues.
#ifndef MP4_MP4_SAMPLE_H_
#define MP4_MP4_SAMPLE_H_

#include <cstdint>
#include <span>
#include <vector>

#include "common/adts.h"
#include "mp4/mp4_file_handle.h"

// Times in milliseconds.
struct Mp4Sample {
  Mp4Block<std::uint8_t> bytes;  // owned
  std::uint32_t size = 0;
  std::uint64_t time = 0;             // decode time, from the time tables
  std::uint64_t start = 0;            // decode time, as the sample itself was read with
  std::int64_t rendering_offset = 0;  // of the presentation, after the decode time

  // 0 where it would be negative.
  std::uint64_t PresentationTime() const;
};

struct Mp4ParameterSets {
  std::vector<std::uint8_t> sps;  // without start codes; empty until known
  std::vector<std::uint8_t> pps;
};

// Whether a video frame was queued since the pipeline was started, delivered already or not.
bool Mp4VideoHasBegun();

// Queues the NAL units of a video sample, each as a frame with a start code instead of its length.
// The first frame of all is an IDR slice, SEI or SPS; until it is queued, units of other types are
// dropped, and the parameter sets stand in front of it. True when it was among these. What does not
// fit into the sample is dropped. Ends when g_mp4Running is cleared.
bool EmitMp4Video(const Mp4Sample& sample, const Mp4ParameterSets& parameter_sets);

// Queues an audio sample behind an ADTS header.
void EmitMp4Audio(const Mp4Sample& sample, const AdtsFields& fields);

#endif  // MP4_MP4_SAMPLE_H_
