#include "bench/looped_sample.h"

#include <cstdio>
#include <cstdlib>
#include <system_error>

namespace {

namespace fs = std::filesystem;

std::string Quoted(const fs::path& path) { return '"' + path.string() + '"'; }

bool Run(const std::string& command) {
  // The command is built from the programs' constants and the build directory.
  return std::system(command.c_str()) == 0;  // NOLINT(cert-env33-c)
}

}  // namespace

bool HaveLoopedSample(const LoopedSample& sample, const fs::path& path) {
  std::error_code error;
  if (fs::exists(path, error)) return true;
  const fs::path part = path.parent_path() / ("part" + sample.suffix);
  const fs::path unfinished = path.parent_path() / ("unfinished" + sample.suffix);
  fs::create_directories(path.parent_path(), error);
  std::fprintf(stderr, "making %s ...\n", path.string().c_str());
  if (!Run("ffmpeg -v error -y " + sample.encode + ' ' + Quoted(part)) ||
      !Run("ffmpeg -v error -y -stream_loop " + std::to_string(sample.repeats) + " -i " +
           Quoted(part) + " -map 0 -c copy " + Quoted(unfinished))) {
    std::fprintf(stderr, "ffmpeg could not make the sample\n");
    return false;
  }
  fs::remove(part, error);
  fs::rename(unfinished, path, error);
  return !error;
}
