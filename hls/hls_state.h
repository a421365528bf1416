// The process-wide state of HLS: one stream at a time, whichever pipeline plays it.
//
// Lock order: g_playlistMutex, g_downloadMutex, TsDemuxLock, g_segmentQueueMutex, then the mutexes
// inside segment_states and hls_state. No lock is held while the player is called.
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

// Bodies of the latest playlist downloads. A body that is not a playlist stays, and the next body
// is appended to it. Kept for compatibility. Guarded by g_playlistMutex, which a playlist thread
// holds during a whole download.
extern std::mutex g_playlistMutex;
extern NeverDestroyed<std::string> g_playlistText;
extern NeverDestroyed<std::string> g_variantText;

// A segment that is queued for the segment thread.
struct QueuedSegment {
  M3u8Entry entry;
  std::string identity;     // the segment thread skips an identity that it took before
  std::uint64_t epoch = 0;  // number of stream restarts before it was queued
};

extern std::mutex g_segmentQueueMutex;
extern NeverDestroyed<std::vector<QueuedSegment>> g_segmentQueue;  // guarded by g_segmentQueueMutex

// Epoch and identity of pending segments whose address serves another segment now. They are
// skipped, since the other segment is queued too. Guarded by g_segmentQueueMutex.
extern NeverDestroyed<std::set<std::pair<std::uint64_t, std::string>>> g_replacedSegments;

// Notified when segments were queued, when the parse thread has finished a segment, and on a stop.
// The notifying thread locks g_segmentQueueMutex after its change and before the call.
extern NeverDestroyed<std::condition_variable> g_segmentQueueCond;

// A longer segment cannot be played.
inline constexpr std::size_t kSegmentBufferSize = 15'728'640;  // 15 MiB

// One of two static buffers that are swapped at each hand-over: a segment is never copied.
using SegmentBuffer = std::array<std::uint8_t, kSegmentBufferSize>;

// The segment being downloaded. Guarded by g_downloadMutex, which the segment thread holds during a
// download and its hand-over.
extern std::mutex g_downloadMutex;
extern SegmentBuffer* g_downloadBuffer;
extern std::int32_t g_downloadLength;

// The segment that was handed over last. While the length is 0, the buffer belongs to the segment
// thread, which holds g_downloadMutex. Otherwise it belongs to the parse thread, which holds
// TsDemuxLock and resets the length to 0 when it has finished.
extern SegmentBuffer* g_parseBuffer;
extern std::atomic<std::int32_t> g_parseLength;

// Sets the active pipeline: the one that was created or started last. The write callbacks check its
// run flag, whichever pipeline their transfer belongs to. Kept for compatibility.
void SetActiveM3u8(const HlsPipeline* pipeline);
void ForgetActiveM3u8(const HlsPipeline* pipeline);  // call before it is destroyed
bool ActiveM3u8Runs();                               // false if there is no active pipeline

// Wakes every task that waits on g_segmentQueueCond. Change what they wait for before the call.
void WakeHlsTasks();

#endif  // HLS_HLS_STATE_H_
