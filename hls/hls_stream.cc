#include "hls/hls_stream.h"

#include <algorithm>
#include <iterator>

#include "hls/hls_task_state.h"
#include "ts/ts_demux.h"

namespace stream {

NeverDestroyed<HlsStream> g_hlsStream;

// Defined here, not in the class: then `HlsStream()` does not zero the buffers first.
HlsStream::HlsStream() = default;

void HlsStream::Clear() {
  {
    const MutexLock playlist_lock(playlist_mutex);
    const MutexLock queue_lock(g_segmentQueueMutex);
    g_playlistText = std::string();  // releases the memory
    g_variantText = std::string();
    // Together: another facade's pending segments need what the ledger knows about them.
    g_segmentQueue = {};
    on_demand_queued = false;
    ledger.Clear();
  }
  {
    const MutexLock lock(download_mutex);
    g_downloadLength = 0;
    leftover_length = 0;
  }
  {
    const TsDemuxLock lock;
    g_parseLength = 0;
  }
  WakeTasks();
}

void HlsStream::SetActive(const HlsTaskState* hls) {
  const MutexLock lock(active_mutex_);
  g_activeM3u8 = hls;
}

void HlsStream::ForgetActive(const HlsTaskState* hls) {
  const MutexLock lock(active_mutex_);
  if (g_activeM3u8 == hls) g_activeM3u8 = nullptr;
}

bool HlsStream::ActiveRuns() {
  const MutexLock lock(active_mutex_);
  return g_activeM3u8 != nullptr && g_activeM3u8->running.load();
}

void HlsStream::SkipFirstVideoFrame() {
  g_audioSkip = 0;
  g_videoSkip = -1;
}

std::size_t HlsStream::FreeSlots() {
  const MutexLock lock(g_segmentQueueMutex);
  return kMaxQueuedSegments - std::min(kMaxQueuedSegments, g_segmentQueue.size());
}

void HlsStream::Queue(std::vector<QueuedSegment> segments, bool is_on_demand) {
  {
    const MutexLock lock(g_segmentQueueMutex);
    std::move(segments.begin(), segments.end(), std::back_inserter(g_segmentQueue));
    on_demand_queued = on_demand_queued || is_on_demand;
  }
  WakeTasks();
}

void HlsStream::WakeTasks() {
  // Locked once, so that no task is between checking its condition and waiting.
  { const MutexLock lock(g_segmentQueueMutex); }
  g_segmentQueueCond.notify_all();
}

}  // namespace stream
