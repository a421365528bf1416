// What the FLV pipeline keeps for the whole process: one stream at a time, whichever CFlvDownloader
// plays it. The facade only forgets its FLV pipeline when it is destroyed (kept on purpose), so
// this state outlives every pipeline object; it is set up afresh at each start instead.
#ifndef FLV_FLV_STATE_H_
#define FLV_FLV_STATE_H_

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>

#include "common/byte_buffer.h"
#include "common/never_destroyed.h"

// The run flag: the loops of all four tasks run while it is set.
extern std::atomic<bool> g_flvRunning;

// Bytes received and not parsed yet. It has no bound: a slow parser lets it grow with the download.
extern std::mutex g_flvStreamLock;
extern NeverDestroyed<CByteBuffer> g_flvStreamBuffer;  // guarded by g_flvStreamLock

// Notified when enough has been received for the play task to begin, at the end of the download and
// at a stop; what it tells of changes with g_flvStreamLock held.
extern NeverDestroyed<std::condition_variable> g_flvDataReady;

// The play task does not wait any longer once more unread bytes than this are staged.
inline constexpr std::uint32_t kFlvReadySize = 10240;

// Makes the stream buffer new and empty.
void ResetFlvStream();

// Puts a piece of the stream, which begins at `offset`, into the stream buffer, as far as it is not
// there yet: a local file comes from two sides, and each byte of it is parsed once. False when
// memory runs out.
bool StageFlvBytes(std::uint64_t offset, const void* bytes, std::uint32_t size);

// Unread bytes in the stream buffer.
std::uint32_t StagedFlvBytes();

// Wakes the play task. What it waits for must have changed before.
void WakeFlvPlayer();

#endif  // FLV_FLV_STATE_H_
