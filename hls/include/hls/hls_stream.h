// HlsStream: all process-wide state of HLS. One stream at a time, whichever pipeline plays it.
//
// The one instance is g_hlsStream. Tasks reach it through HlsTaskState::stream.
// The declarations of the mutexes state the lock order. The mutex inside SegmentLedger is the last.
// No lock is held while the player is called.
#ifndef HLS_HLS_STREAM_H_
#define HLS_HLS_STREAM_H_

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "common/never_destroyed.h"
#include "hls/segment_ledger.h"
#include "platform/mutex.h"
#include "ts/ts_demux.h"

namespace stream {

struct HlsTaskState;

// A longer segment cannot be played.
inline constexpr std::size_t kSegmentBufferSize = 15'728'640;  // 15 MiB

// One of two static buffers that are swapped at each hand-over: a segment is never copied.
using SegmentBuffer = std::array<std::uint8_t, kSegmentBufferSize>;

// Members with the prefix g_ have a fixed name. Kept for compatibility.
class HlsStream {
 public:
  HlsStream();
  HlsStream(const HlsStream&) = delete;
  HlsStream& operator=(const HlsStream&) = delete;

  // Clears everything that belongs to the stream: texts, ledger, queued segments and buffers, but
  // not the frames to skip. No task of the stopped pipeline may be running; those of another facade
  // may.
  void Clear() EXCLUDES(playlist_mutex, download_mutex, g_segmentQueueMutex,
                        ProcessTsDemuxer().BatchMutex());

  // Sets the active pipeline: the one that was created or started last. The write callbacks check
  // its run flag, whichever pipeline their transfer belongs to. Kept for compatibility.
  void SetActive(const HlsTaskState* hls) EXCLUDES(active_mutex_);
  // Call this before the pipeline is destroyed.
  void ForgetActive(const HlsTaskState* hls) EXCLUDES(active_mutex_);
  // Returns false if there is no active pipeline.
  bool ActiveRuns() EXCLUDES(active_mutex_);

  // Makes the next run skip its first video frame and no audio frame. Called after a stop.
  // Kept for compatibility.
  void SkipFirstVideoFrame();

  // Number of further segments that the queue has space for.
  std::size_t FreeSlots() EXCLUDES(g_segmentQueueMutex);

  // Appends the segments to the queue at once, so that the segment thread gets them as one batch,
  // and wakes it. An on-demand playlist wakes it even if the playlist lists nothing.
  void Queue(std::vector<QueuedSegment> segments, bool is_on_demand) EXCLUDES(g_segmentQueueMutex);

  // Wakes every task that waits on g_segmentQueueCond. Change what they wait for before the call.
  void WakeTasks() EXCLUDES(g_segmentQueueMutex);

  // Bodies of the latest playlist downloads. A body that is not a playlist stays, and the next body
  // is appended to it. Kept for compatibility. A playlist thread holds the mutex during a whole
  // download.
  Mutex playlist_mutex ACQUIRED_BEFORE(download_mutex);
  std::string g_playlistText GUARDED_BY(playlist_mutex);
  std::string g_variantText GUARDED_BY(playlist_mutex);

  // Which segments were listed, queued, taken and downloaded. Thread-safe.
  SegmentLedger ledger;

  // The condition is notified when segments were queued, when the parse thread has finished a
  // segment, and on a stop. The notifying thread locks the mutex after its change and before the
  // call.
  Mutex g_segmentQueueMutex ACQUIRED_AFTER(ProcessTsDemuxer().BatchMutex());
  std::condition_variable g_segmentQueueCond;
  std::vector<QueuedSegment> g_segmentQueue GUARDED_BY(g_segmentQueueMutex);
  bool on_demand_queued GUARDED_BY(g_segmentQueueMutex) = false;

  // The segment being downloaded. A segment thread holds the mutex during a download and its
  // hand-over.
  Mutex download_mutex ACQUIRED_BEFORE(ProcessTsDemuxer().BatchMutex());
  SegmentBuffer* g_downloadBuffer GUARDED_BY(download_mutex)
      PT_GUARDED_BY(download_mutex) = &first_buffer_;
  std::int32_t g_downloadLength GUARDED_BY(download_mutex) = 0;
  // Bytes of it that a failed download left.
  std::int32_t leftover_length GUARDED_BY(download_mutex) = 0;

  // The segment that was handed over last. While the length is 0, the buffer belongs to the segment
  // thread, which holds download_mutex. Otherwise it belongs to the parse thread, which holds
  // TsDemuxLock and resets the length to 0 when it has finished.
  SegmentBuffer* g_parseBuffer = &second_buffer_;
  std::atomic<std::int32_t> g_parseLength{0};

  // While a counter is negative, each frame of its kind is skipped and counted.
  std::atomic<std::int32_t> g_videoSkip{0};
  std::atomic<std::int32_t> g_audioSkip{0};

 private:
  Mutex active_mutex_ ACQUIRED_AFTER(g_segmentQueueMutex);
  const HlsTaskState* g_activeM3u8 GUARDED_BY(active_mutex_) PT_GUARDED_BY(active_mutex_) = nullptr;

  // Not initialised, so that pages which no segment fills take no memory.
  SegmentBuffer first_buffer_;
  SegmentBuffer second_buffer_;
};

extern NeverDestroyed<HlsStream> g_hlsStream;

}  // namespace stream

#endif  // HLS_HLS_STREAM_H_
