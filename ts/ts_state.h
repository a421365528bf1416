// What the TS pipeline keeps for the whole process: one stream at a time, whichever CTsDownloader
// plays it. The facade only forgets its TS pipeline when it is destroyed (kept for compatibility),
// so this state outlives every pipeline object; each start sets it up again instead.
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

// Bytes received for the current address: also the offset at which the next start resumes.
extern std::atomic<std::uint64_t> g_tsDownloaded;

// The player of the start made last. Kept for compatibility: no task reads it, since the tasks of a
// start use the player of the facade it was made on.
extern PlayerPort g_tsPlayer;  // guarded by g_tsStateLock

extern std::mutex g_tsStateLock;
extern NeverDestroyed<std::string> g_tsUrl;       // guarded by g_tsStateLock
extern NeverDestroyed<std::string> g_tsTempPath;  // guarded by g_tsStateLock

// Bytes received and not parsed yet: whole packets only.
extern std::mutex g_tsStreamLock;
extern NeverDestroyed<CByteBuffer> g_tsStreamBuffer;  // guarded by g_tsStreamLock

// Copy buffers, of which only the one below is used; guarded by TsDemuxLock.
extern NeverDestroyed<std::array<CopyBuffer, 3>> g_tsScratch;
inline constexpr std::size_t kParseScratch = 1;

// A copy taken under the lock.
std::string TsUrl();

#endif  // TS_TS_STATE_H_
