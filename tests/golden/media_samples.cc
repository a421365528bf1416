#include "tests/golden/media_samples.h"

#include <string>

#include "tests/golden/made_once.h"
#include "tests/golden/media_tools.h"

namespace stream {
namespace {

// ffmpeg numbers the PIDs of the streams from 0x100 on, in the order in which they are mapped.
constexpr std::uint16_t Pid(int stream) { return static_cast<std::uint16_t>(0x100 + stream); }

std::string Picture(const char* source) {
  return std::string(" -f lavfi -i ") + source + "=size=320x240:rate=25:duration=4";
}

std::string Tone(int hertz) {
  return " -f lavfi -i sine=frequency=" + std::to_string(hertz) + ":sample_rate=48000:duration=4";
}

constexpr char kH264[] = " -c:v libx264 -preset veryfast -bf 2 -g 25 -pix_fmt yuv420p";
constexpr char kH265[] =
    " -c:v libx265 -preset ultrafast -x265-params log-level=error:pools=1:bframes=2:keyint=25"
    " -pix_fmt yuv420p";
constexpr char kMpeg2[] = " -c:v mpeg2video -bf 2 -g 12 -b:v 1M";
constexpr char kAac[] = " -c:a aac -b:a 96k";
constexpr char kMp2[] = " -c:a mp2 -b:a 128k";
constexpr char kOneOfEach[] = " -map 0:v -map 1:a";

MediaSample TwoPrograms() {
  return {"TwoPrograms",
          Picture("testsrc2") + Tone(440) + Picture("testsrc") + Tone(880) +
              " -map 0:v -map 1:a -map 2:v -map 3:a -program title=one:st=0:st=1"
              " -program title=two:st=2:st=3" +
              kH264 + kAac,
          Pid(2), Pid(1)};
}

MediaSample TwoAudioTracks() {
  return {
      "TwoAudioTracks",
      Picture("testsrc2") + Tone(440) + Tone(880) + " -map 0:v -map 1:a -map 2:a" + kH264 + kAac,
      Pid(0), Pid(1)};
}

std::filesystem::path Make(const std::string& arguments, const std::string& format,
                           const std::string& name) {
  const std::string command = "ffmpeg -v error -y" + arguments +
                              " -threads 1 -flags +bitexact -fflags +bitexact -f " + format + " -";
  return MadeOnce(name, command, [&](const auto& file) { RunTool(command, file); });
}

FlvSample WithAac(int rate, int channels) {
  const std::string hertz = std::to_string(rate);
  return {"H264AndAacAt" + hertz + (channels == 1 ? "Mono" : "Stereo"),
          Picture("testsrc2") + Tone(440) + kOneOfEach + kH264 + " -c:a aac -b:a 32k -ar " + hertz +
              " -ac " + std::to_string(channels),
          true, "adts"};
}

}  // namespace

void PrintTo(const MediaSample& sample, std::ostream* out) { *out << sample.name; }

std::vector<MediaSample> MediaSamples() {
  const std::string both = Picture("testsrc2") + Tone(440) + kOneOfEach;
  return {{"H264WithBFramesAndAac", both + kH264 + kAac, Pid(0), Pid(1)},
          {"H265AndAac", both + kH265 + kAac, Pid(0), Pid(1)},
          {"Mpeg2VideoAndMp2", both + kMpeg2 + kMp2, Pid(0), Pid(1)},
          {"VideoOnly", Picture("testsrc2") + kH264, Pid(0), 0},
          TwoAudioTracks(),
          TwoPrograms()};
}

MediaSample TwoProgramsSample() { return TwoPrograms(); }

std::filesystem::path FileOf(const MediaSample& sample) {
  return Make(sample.arguments, "mpegts", sample.name + ".ts");
}

void PrintTo(const FlvSample& sample, std::ostream* out) { *out << sample.name; }

std::vector<FlvSample> FlvSamples() {
  const std::string both = Picture("testsrc2") + Tone(440) + kOneOfEach + kH264;
  std::vector<FlvSample> samples = {
      {"H264AndMp3", both + " -c:a libmp3lame -b:a 96k -ar 44100", true, "mp3"},
      {"SeveralSlicesAPicture", both + " -x264-params slices=4" + kAac, true, "adts"},
      {"VideoOnly", Picture("testsrc2") + kH264, true, ""},
      {"AudioOnly", Tone(440) + kAac, false, "adts"},
      // Begins with an AAC sequence header without a configuration.
      {"CopyOfATransportStream", both + kAac, true, "adts", true},
      // The timestamps of its second half need more than 24 bits of milliseconds.
      {"TimestampsPastTwentyFourBits", both + kAac + " -output_ts_offset 16775", true, "adts"},
  };
  for (const int rate : {8000, 22050, 44100, 48000}) {
    samples.push_back(WithAac(rate, 1));
    samples.push_back(WithAac(rate, 2));
  }
  return samples;
}

std::filesystem::path FileOf(const FlvSample& sample) {
  const std::string name = sample.name + ".flv";
  if (!sample.is_copy) return Make(sample.arguments, "flv", name);
  const auto source = Make(sample.arguments, "mpegts", sample.name + ".ts");
  return Make(" -i " + Quoted(source) + " -c copy", "flv", name);
}

}  // namespace stream
