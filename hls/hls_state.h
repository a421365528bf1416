// What HLS keeps for the whole process: one stream at a time, whichever pipeline plays it.
//
// Locks are taken in this order: g_playlistMutex, g_downloadMutex, TsDemuxLock,
// g_segmentQueueMutex, then those inside segment_states and hls_state. None is held while the
// player is called.
#ifndef HLS_HLS_STATE_H_
#define HLS_HLS_STATE_H_

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "common/never_destroyed.h"
#include "hls/hls_pipeline.h"
#include "hls/m3u8_playlist.h"

// Bodies of the last playlist downloads. A body that is no playlist stays, and the next one is
// appended to it (kept on purpose). Guarded by g_playlistMutex, which one playlist thread holds
// through a whole download.
extern std::mutex g_playlistMutex;
extern NeverDestroyed<std::string> g_playlistText;
extern NeverDestroyed<std::string> g_variantText;

// A segment that waits for the segment thread.
struct QueuedSegment {
  M3u8Entry entry;
  std::string identity;     // by which the segment thread knows whether it took it before
  std::uint64_t epoch = 0;  // counts the restarts of the stream before it
};

extern std::mutex g_segmentQueueMutex;
extern NeverDestroyed<std::vector<QueuedSegment>> g_segmentQueue;  // guarded by g_segmentQueueMutex

// Pending segments whose address names another segment by now, by epoch and identity: what it would
// bring is queued too. Guarded by g_segmentQueueMutex.
extern NeverDestroyed<std::set<std::pair<std::uint64_t, std::string>>> g_replacedSegments;

// Notified, after g_segmentQueueMutex was held, when segments were queued, when the parse thread
// has taken a segment, and at a stop.
extern NeverDestroyed<std::condition_variable> g_segmentQueueCond;

// A segment longer than this cannot be played.
inline constexpr std::size_t kSegmentBufferSize = 15'728'640;  // 15 MiB

// One of two static ones, which change places at each hand-over: a segment is never copied.
using SegmentBuffer = std::array<std::uint8_t, kSegmentBufferSize>;

// The segment being downloaded. Guarded by g_downloadMutex, which the segment thread holds through
// a download and its hand-over.
extern std::mutex g_downloadMutex;
extern SegmentBuffer* g_downloadBuffer;
extern std::int32_t g_downloadLength;

// The segment handed over last. While the length is 0 the buffer is the segment thread's (with
// g_downloadMutex held), else the parse thread's (with the demultiplexer's lock held), which sets
// it back to 0.
extern SegmentBuffer* g_parseBuffer;
extern std::atomic<std::int32_t> g_parseLength;

// The pipeline made or started last: the write callbacks look at its run flag, whichever pipeline
// their transfer belongs to (kept on purpose).
void SetActiveM3u8(const HlsPipeline* pipeline);
void ForgetActiveM3u8(const HlsPipeline* pipeline);  // before it is destroyed
bool ActiveM3u8Runs();                               // false where there is none

// Wakes every task that waits on g_segmentQueueCond. What they wait for must have changed before.
void WakeHlsTasks();

#endif  // HLS_HLS_STATE_H_
