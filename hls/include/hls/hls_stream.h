// HlsStream: all process-wide state of HLS. One stream at a time, whichever pipeline plays it.
//
// The one instance is g_hlsStream. Tasks reach it through their pipeline (HlsPipeline::stream).
// Every member names the mutex that guards it.
//
// Lock order: playlist_mutex, download_mutex, TsDemuxLock, g_segmentQueueMutex, then the mutexes
// inside SegmentLedger and HlsStream. No lock is held while the player is called.
#ifndef HLS_HLS_STREAM_H_
#define HLS_HLS_STREAM_H_

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "common/never_destroyed.h"
#include "hls/segment_ledger.h"

namespace stream {

struct HlsPipeline;

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
  // not the frames to skip. No task may be running.
  void Clear();

  // Sets the active pipeline: the one that was created or started last. The write callbacks check
  // its run flag, whichever pipeline their transfer belongs to. Kept for compatibility.
  void SetActive(const HlsPipeline* pipeline);
  void ForgetActive(const HlsPipeline* pipeline);  // call before it is destroyed
  bool ActiveRuns();                               // false if there is no active pipeline

  // Makes the next run skip its first video frame and no audio frame. Called after a stop.
  // Kept for compatibility.
  void SkipFirstVideoFrame();

  // Number of further segments that the queue has space for.
  std::size_t FreeSlots();

  // Appends the segments to the queue at once, so that the segment thread gets them as one batch,
  // and wakes it. An on-demand playlist wakes it even if the playlist lists nothing.
  void Queue(std::vector<QueuedSegment> segments, bool is_on_demand);

  // Wakes every task that waits on g_segmentQueueCond. Change what they wait for before the call.
  void WakeTasks();

  // Bodies of the latest playlist downloads. A body that is not a playlist stays, and the next body
  // is appended to it. Kept for compatibility. A playlist thread holds the mutex during a whole
  // download.
  std::mutex playlist_mutex;
  std::string g_playlistText;  // guarded by playlist_mutex
  std::string g_variantText;   // guarded by playlist_mutex

  // Which segments were listed, queued, taken and downloaded. Thread-safe.
  SegmentLedger ledger;

  // The condition is notified when segments were queued, when the parse thread has finished a
  // segment, and on a stop. The notifying thread locks the mutex after its change and before the
  // call.
  std::mutex g_segmentQueueMutex;
  std::condition_variable g_segmentQueueCond;
  std::vector<QueuedSegment> g_segmentQueue;  // guarded by g_segmentQueueMutex
  bool on_demand_queued = false;              // guarded by g_segmentQueueMutex

  // The segment being downloaded. A segment thread holds the mutex during a download and its
  // hand-over.
  std::mutex download_mutex;
  SegmentBuffer* g_downloadBuffer = &first_buffer_;  // guarded by download_mutex
  std::int32_t g_downloadLength = 0;                 // guarded by download_mutex
  std::int32_t leftover_length = 0;  // bytes of it that a failed download left; same guard

  // The segment that was handed over last. While the length is 0, the buffer belongs to the segment
  // thread, which holds download_mutex. Otherwise it belongs to the parse thread, which holds
  // TsDemuxLock and resets the length to 0 when it has finished.
  SegmentBuffer* g_parseBuffer = &second_buffer_;
  std::atomic<std::int32_t> g_parseLength{0};

  // While a counter is negative, each frame of its kind is skipped and counted.
  std::atomic<std::int32_t> g_videoSkip{0};
  std::atomic<std::int32_t> g_audioSkip{0};

 private:
  std::mutex active_mutex_;
  const HlsPipeline* g_activeM3u8 = nullptr;  // guarded by active_mutex_

  // Not initialised, so that pages which no segment fills take no memory.
  SegmentBuffer first_buffer_;
  SegmentBuffer second_buffer_;
};

extern NeverDestroyed<HlsStream> g_hlsStream;

}  // namespace stream

#endif  // HLS_HLS_STREAM_H_
