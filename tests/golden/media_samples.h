// The streams of the golden tests. ffmpeg makes them at test time from fixed parameters, each once
// (made_once.h).
#ifndef TESTS_GOLDEN_MEDIA_SAMPLES_H_
#define TESTS_GOLDEN_MEDIA_SAMPLES_H_

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

namespace stream {

struct MediaSample {
  std::string name;         // part of the name of a test case
  std::string arguments;    // of ffmpeg, from the inputs to the codecs
  std::uint16_t video_pid;  // the stream expected as video; all have B-frames
  std::uint16_t audio_pid;  // the stream expected as audio; 0 for none
};

// GoogleTest prints a sample by its name.
void PrintTo(const MediaSample& sample, std::ostream* out);

std::vector<MediaSample> MediaSamples();

// One of the samples. Its first program has the PIDs 0x100 (video) and 0x101 (audio), the second
// one 0x102 and 0x103.
MediaSample TwoProgramsSample();

// The file of the sample, which is shared. Throws std::runtime_error if ffmpeg fails.
std::filesystem::path FileOf(const MediaSample& sample);

// An FLV file: H.264, AAC at some rate, or MP3.
struct FlvSample {
  std::string name;
  std::string arguments;
  bool has_video;
  std::string audio_format;  // ffmpeg's format for this audio alone; empty for none
  bool is_copy = false;      // whether ffmpeg copies the packets of a transport stream
};

void PrintTo(const FlvSample& sample, std::ostream* out);

std::vector<FlvSample> FlvSamples();

std::filesystem::path FileOf(const FlvSample& sample);

}  // namespace stream

#endif  // TESTS_GOLDEN_MEDIA_SAMPLES_H_
