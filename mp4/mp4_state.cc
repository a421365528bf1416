#include "mp4/mp4_state.h"

#include "common/temp_files.h"
#include "common/temp_folder.h"

namespace stream {

std::atomic<bool> g_mp4Running{false};

NeverDestroyed<Mp4File> g_mp4File;

// Locked throughout: nothing of the previous address may be written in between.
RunId BeginMp4Run(const std::string& file_name) {
  Mp4File& file = *g_mp4File;
  const MutexLock lock(file.mutex);
  file.path = CreateCacheFile(file_name);
  file.failure_reported = !TempFolderIsWritable();
  file.ranges.Clear();
  ++file.revision;
  file.write_offset = 0;
  return file.runs.Next();
}

}  // namespace stream
