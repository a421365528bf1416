// The process-wide state of the MP4 pipeline: one stream at a time, whichever CMp4Downloader plays
// it. A facade that is destroyed does not destroy its MP4 pipeline, so this state outlives every
// pipeline object. Kept for compatibility.
#ifndef MP4_MP4_STATE_H_
#define MP4_MP4_STATE_H_

#include <atomic>
#include <cstdint>
#include <string>

#include "common/never_destroyed.h"
#include "common/run_id.h"
#include "mp4/downloaded_ranges.h"
#include "platform/mutex.h"

namespace stream {

// The run flag: the loops of all four tasks run while it is set.
extern std::atomic<bool> g_mp4Running;

// The restart file, a sparse cache file that a start of the same address continues, and what is
// known about it. Both are kept until another address is started, which begins the next run of the
// file.
struct Mp4File {
  Mutex mutex;
  std::string path GUARDED_BY(mutex);            // of the restart file
  DownloadedRanges ranges GUARDED_BY(mutex);     // the bytes of the stream that are in it
  std::uint64_t revision GUARDED_BY(mutex) = 0;  // counts the changes of `ranges`
  // Whether a console line already reports that the file cannot be written. For the next download.
  bool failure_reported GUARDED_BY(mutex) = false;

  // The offset from which the next start requests the stream. Advanced by the running download.
  std::uint64_t write_offset GUARDED_BY(mutex) = 0;
  RunCounter runs GUARDED_BY(mutex);  // tasks of an earlier run end
  // Counts the seeks. A download that began before a seek changes write_offset only once it reaches
  // the target of the seek.
  std::uint64_t seeks GUARDED_BY(mutex) = 0;
};

extern NeverDestroyed<Mp4File> g_mp4File;

// Empties the restart file of that name for another address, about which nothing is known yet.
// Returns the id of the run that begins.
RunId BeginMp4Run(const std::string& file_name) EXCLUDES(g_mp4File->mutex);

}  // namespace stream

#endif  // MP4_MP4_STATE_H_
