#include "mp4/mp4_file_handle.h"

#include "common/temp_files.h"

Mp4FileHandle OpenMp4(const std::string& path) {
  return Mp4FileHandle(MP4Read(AnsiToUtf8(path).c_str()));
}

std::uint64_t Mp4Milliseconds(std::uint64_t value, std::uint32_t time_scale) {
  constexpr std::uint64_t kMillisecondsPerSecond = 1000;
  return time_scale == 0 ? 0 : value * kMillisecondsPerSecond / time_scale;
}
