#include "hls/clear_hls_stream.h"

#include <mutex>
#include <string>

#include "hls/hls_state.h"
#include "hls/live_sequences.h"
#include "hls/segment_queue.h"
#include "hls/segment_states.h"
#include "ts/ts_demux.h"

void ClearHlsStream() {
  ClearSegmentQueue();
  {
    const std::lock_guard lock(g_playlistMutex);
    *g_playlistText = std::string();  // releases the memory
    *g_variantText = std::string();
    g_liveSequences->Forget();
  }
  {
    const std::lock_guard lock(g_downloadMutex);
    g_downloadLength = 0;
  }
  {
    const TsDemuxLock lock;
    g_parseLength = 0;
  }
  ForgetAllSegments();
  WakeHlsTasks();
}
