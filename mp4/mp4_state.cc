#include "mp4/mp4_state.h"

#include "common/temp_files.h"
#include "common/temp_folder.h"

std::atomic<bool> g_mp4Running{false};

std::mutex g_mp4FileLock;
NeverDestroyed<Mp4File> g_mp4File;

// Holds the lock throughout: nothing of the previous address may be written in between.
std::uint64_t NextMp4Address(const std::string& file_name) {
  const std::lock_guard lock(g_mp4FileLock);
  Mp4File& file = *g_mp4File;
  file.path = CreateCacheFile(file_name);
  file.failure_reported = !TempFolderIsWritable();
  file.ranges.Clear();
  ++file.revision;
  file.write_offset = 0;
  return ++file.addresses;
}
