#include "bench/ts_sample.h"

std::optional<MemorySample> LoadTsSample() {
  return LoadMemorySample(
      VideoAndAudio(".ts"), "h264_aac.ts",
      "MPEG-TS made by ffmpeg, one program: H.264 1280x720 25/s 5 Mbit/s with B-frames, AAC 128 "
      "kbit/s");
}
