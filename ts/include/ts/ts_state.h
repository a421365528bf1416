// Process-wide state of the TS pipeline: one stream at a time, whichever CTsDownloader plays it.
// Kept for compatibility: the facade's destructor stops its TS pipeline but does not delete it. So
// no destructor clears this state; each start sets it up again.
#ifndef TS_TS_STATE_H_
#define TS_TS_STATE_H_

#include <array>
#include <atomic>
#include <cstdint>
#include <string>

#include "common/byte_buffer.h"
#include "common/copy_buffer.h"
#include "common/never_destroyed.h"
#include "common/player_port.h"
#include "platform/mutex.h"
#include "ts/ts_demux.h"

namespace stream {

// The run flag: the loops of all four tasks run while it is set.
extern std::atomic<bool> g_tsRunning;

// Bytes received for the current address. The next start resumes at this offset.
extern std::atomic<std::uint64_t> g_tsDownloaded;

extern Mutex g_tsStreamLock ACQUIRED_AFTER(ProcessTsDemuxer().BatchMutex());

// Received bytes that are not parsed yet: whole packets only.
extern NeverDestroyed<CByteBuffer> g_tsStreamBuffer GUARDED_BY(g_tsStreamLock);

// The address of the last start.
extern NeverDestroyed<std::string> g_tsUrl GUARDED_BY(g_tsStreamLock);

// Kept for compatibility: the names below are fixed, but nothing in the component reads them.
// - The player and the cache file of the last start. The tasks of a start use the player of their
//   own facade, and nothing is written to the file.
// - Copy buffers, which stay empty: a batch is not copied.
extern PlayerPort g_tsPlayer GUARDED_BY(g_tsStreamLock);
extern NeverDestroyed<std::string> g_tsTempPath GUARDED_BY(g_tsStreamLock);
extern NeverDestroyed<std::array<CopyBuffer, 3>> g_tsScratch;

std::string TsUrl() EXCLUDES(g_tsStreamLock);

}  // namespace stream

#endif  // TS_TS_STATE_H_
