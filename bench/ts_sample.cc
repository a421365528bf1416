#include "bench/ts_sample.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace {

namespace fs = std::filesystem;

// Twenty seconds, played again and again by a second run that copies the streams: the timestamps
// run on as those of one long recording would.
constexpr char kEncode[] =
    "ffmpeg -v error -y -f lavfi -i testsrc2=size=1280x720:rate=25:duration=20"
    " -f lavfi -i sine=frequency=440:sample_rate=48000:duration=20"
    " -c:v libx264 -preset veryfast -bf 2 -g 50 -b:v 5M -minrate 5M -maxrate 5M -bufsize 2M"
    " -pix_fmt yuv420p -c:a aac -b:a 128k -f mpegts ";
constexpr char kRepeat[] = "ffmpeg -v error -y -stream_loop 29 -i ";
constexpr char kCopy[] = " -map 0 -c copy -f mpegts ";
constexpr char kDescription[] =
    "MPEG-TS made by ffmpeg, one program: H.264 1280x720 25/s 5 Mbit/s with B-frames, AAC 128 "
    "kbit/s";

std::string Quoted(const fs::path& path) { return '"' + path.string() + '"'; }

bool Run(const std::string& command) {
  // The command is made of the constants above and the build's own directory.
  return std::system(command.c_str()) == 0;  // NOLINT(cert-env33-c)
}

bool Make(const fs::path& sample) {
  const fs::path short_part = sample.parent_path() / "part.ts";
  const fs::path unfinished = sample.parent_path() / "unfinished.ts";
  std::error_code error;
  fs::create_directories(sample.parent_path(), error);
  std::fprintf(stderr, "making %s ...\n", sample.string().c_str());
  if (!Run(kEncode + Quoted(short_part)) ||
      !Run(kRepeat + Quoted(short_part) + kCopy + Quoted(unfinished))) {
    std::fprintf(stderr, "ffmpeg could not make the sample\n");
    return false;
  }
  fs::remove(short_part, error);
  fs::rename(unfinished, sample, error);
  return !error;
}

}  // namespace

std::optional<TsSample> LoadTsSample() {
  const fs::path path = fs::path(STREAM_BENCH_DATA) / "h264_aac.ts";
  std::error_code error;
  if (!fs::exists(path, error) && !Make(path)) return std::nullopt;
  const auto size = fs::file_size(path, error);
  TsSample sample{kDescription, std::vector<std::uint8_t>(error ? 0 : size)};
  std::ifstream file(path, std::ios::binary);
  file.read(reinterpret_cast<char*>(sample.bytes.data()), static_cast<std::streamsize>(size));
  if (error || !file) {
    std::fprintf(stderr, "%s cannot be read\n", path.string().c_str());
    return std::nullopt;
  }
  sample.description += ", " + std::to_string(size) + " bytes";
  return sample;
}
