// What the MP4 pipeline keeps for the whole process: one stream at a time, whichever CMp4Downloader
// plays it. The facade only forgets its MP4 pipeline when it is destroyed (kept on purpose), so
// this state outlives every pipeline object.
#ifndef MP4_MP4_STATE_H_
#define MP4_MP4_STATE_H_

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "common/never_destroyed.h"
#include "mp4/downloaded_ranges.h"

// The run flag: the loops of all four tasks run while it is set.
extern std::atomic<bool> g_mp4Running;

// The restart file and what is known of it. Both live until another address is started.
struct Mp4File {
  std::string path;            // of the restart file
  DownloadedRanges ranges;     // what of the stream is in it
  std::uint64_t revision = 0;  // counts the changes of `ranges`
  // Whether the console has a line already that the file cannot be written, for the next download.
  bool failure_reported = false;

  // Where the next start asks for the stream from, and where the running download has got to.
  std::uint64_t write_offset = 0;
  std::uint64_t addresses = 0;  // counts the addresses: what still serves an earlier one ends
  // Counts the seeks: a download before one leaves write_offset alone until it passes there.
  std::uint64_t seeks = 0;
};

extern std::mutex g_mp4FileLock;
extern NeverDestroyed<Mp4File> g_mp4File;  // guarded by g_mp4FileLock

// Empties the restart file of that name for another address, of which nothing is known, and returns
// the number of the address.
std::uint64_t NextMp4Address(const std::string& file_name);

#endif  // MP4_MP4_STATE_H_
