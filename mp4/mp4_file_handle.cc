#include "mp4/mp4_file_handle.h"

#include <limits>

#include "common/temp_files.h"
#include "platform/files.h"

namespace stream {
#ifdef STREAM_MP4_READER_LOGS
namespace {

// An installed library would log to the host's console whenever a sample is not available yet.
[[maybe_unused]] const bool g_is_quiet = (MP4LogSetLevel(MP4_LOG_NONE), true);

}  // namespace
#endif

Mp4FileHandle OpenMp4(const std::string& path) {
  if (platform::IsSpecialFile(path)) return nullptr;  // an installed library would block on it
  return Mp4FileHandle(MP4Read(AnsiToUtf8(path).c_str()));
}

std::uint64_t Mp4Milliseconds(std::uint64_t value, std::uint32_t time_scale) {
  constexpr std::uint64_t kMillisecondsPerSecond = 1000;
  constexpr std::uint64_t kMax = std::numeric_limits<std::uint64_t>::max();
  if (time_scale == 0) return 0;
  const std::uint64_t seconds = value / time_scale;
  const std::uint64_t rest = value % time_scale * kMillisecondsPerSecond / time_scale;
  if (seconds > (kMax - rest) / kMillisecondsPerSecond) return kMax;
  return seconds * kMillisecondsPerSecond + rest;
}

std::int64_t Mp4OffsetMilliseconds(std::uint64_t offset, std::uint32_t time_scale) {
  constexpr std::int64_t kMillisecondsPerSecond = 1000;
  if (time_scale == 0) return 0;
  const std::int64_t value = static_cast<std::int32_t>(static_cast<std::uint32_t>(offset));
  return value * kMillisecondsPerSecond / time_scale;
}

}  // namespace stream
