#include "mp4/mp4_file_handle.h"

#include "common/temp_files.h"

#ifdef STREAM_MP4_READER_LOGS
namespace {

// An installed library would write to the host's console whenever a sample is not there yet.
[[maybe_unused]] const bool g_is_quiet = (MP4LogSetLevel(MP4_LOG_NONE), true);

}  // namespace
#endif

Mp4FileHandle OpenMp4(const std::string& path) {
  return Mp4FileHandle(MP4Read(AnsiToUtf8(path).c_str()));
}

std::uint64_t Mp4Milliseconds(std::uint64_t value, std::uint32_t time_scale) {
  constexpr std::uint64_t kMillisecondsPerSecond = 1000;
  return time_scale == 0 ? 0 : value * kMillisecondsPerSecond / time_scale;
}
