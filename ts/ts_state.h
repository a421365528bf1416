// Process-wide state of the TS pipeline: one stream at a time, whichever CTsDownloader plays it.
// Kept for compatibility: the facade's destructor stops its TS pipeline but does not delete it. So
// no destructor clears this state; each start sets it up again.
#ifndef TS_TS_STATE_H_
#define TS_TS_STATE_H_

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>

#include "common/byte_buffer.h"
#include "common/copy_buffer.h"
#include "common/never_destroyed.h"
#include "common/player_port.h"

// The run flag: the loops of all four tasks run while it is set.
extern std::atomic<bool> g_tsRunning;

// Bytes received for the current address. The next start resumes at this offset.
extern std::atomic<std::uint64_t> g_tsDownloaded;

// The player of the last start. Kept for compatibility: no task reads it, since the tasks of a
// start use the player of their own facade.
extern PlayerPort g_tsPlayer;  // guarded by g_tsStateLock

extern std::mutex g_tsStateLock;
extern NeverDestroyed<std::string> g_tsUrl;       // guarded by g_tsStateLock
extern NeverDestroyed<std::string> g_tsTempPath;  // guarded by g_tsStateLock

// Received bytes that are not parsed yet: whole packets only.
extern std::mutex g_tsStreamLock;
extern NeverDestroyed<CByteBuffer> g_tsStreamBuffer;  // guarded by g_tsStreamLock

// Copy buffers; only the one at kParseScratch is used. Guarded by TsDemuxLock.
extern NeverDestroyed<std::array<CopyBuffer, 3>> g_tsScratch;
inline constexpr std::size_t kParseScratch = 1;

// Returns a copy of g_tsUrl.
std::string TsUrl();

#endif  // TS_TS_STATE_H_
