// The streams of the golden tests: made by ffmpeg at test time from fixed parameters, each once
// (made_once.h).
#ifndef TESTS_GOLDEN_MEDIA_SAMPLES_H_
#define TESTS_GOLDEN_MEDIA_SAMPLES_H_

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <string>
#include <vector>

struct MediaSample {
  std::string name;         // as a test case carries it
  std::string arguments;    // ffmpeg's, from the inputs to the codecs
  std::uint16_t video_pid;  // the stream that is to come out as video; all have B-frames
  std::uint16_t audio_pid;  // likewise audio; 0 for none
};

// How a test case names its sample.
void PrintTo(const MediaSample& sample, std::ostream* out);

std::vector<MediaSample> MediaSamples();

// One of them. The streams of the first program have the PIDs 0x100 (video) and 0x101 (audio),
// those of the second 0x102 and 0x103.
MediaSample TwoProgramsSample();

// The sample's file, which is shared. Throws std::runtime_error if ffmpeg fails.
std::filesystem::path FileOf(const MediaSample& sample);

// An FLV file: H.264, AAC at some rate, or MP3.
struct FlvSample {
  std::string name;
  std::string arguments;
  bool has_video;
  std::string audio_format;  // as ffmpeg calls a file of just this audio; empty for none
  bool is_copy = false;      // of a transport stream, whose packets ffmpeg took over as they are
};

void PrintTo(const FlvSample& sample, std::ostream* out);

std::vector<FlvSample> FlvSamples();

std::filesystem::path FileOf(const FlvSample& sample);

#endif  // TESTS_GOLDEN_MEDIA_SAMPLES_H_
