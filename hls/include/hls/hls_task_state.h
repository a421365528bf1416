// The state that the tasks of one HLS pipeline share. CM3u8Downloader owns it; the tasks borrow it
// and finish before it is destroyed.
#ifndef HLS_HLS_TASK_STATE_H_
#define HLS_HLS_TASK_STATE_H_

#include <atomic>
#include <chrono>

#include "common/http_transfer.h"
#include "common/player_port.h"
#include "hls/hls_stream.h"

namespace stream {

// Durations and positions are in seconds. Members that are not atomic are set before the first task
// runs.
struct HlsTaskState {
  HlsStream& stream = *g_hlsStream;  // shared with all other pipelines
  PlayerPort player;
  std::atomic<bool> running{false};  // every task loops while it is set

  // A playlist or segment transfer fails if it receives no byte for this long, so that one hanging
  // connection does not end a live stream.
  std::chrono::milliseconds silence_limit{10'000};

  // Transfer handles, kept for the lifetime of the pipeline. If one could not be created, the work
  // that needs it is skipped.
  CurlHandle variantHandle PT_GUARDED_BY(stream.playlist_mutex);
  CurlHandle playlistHandle PT_GUARDED_BY(stream.playlist_mutex);
  CurlHandle segmentHandle PT_GUARDED_BY(stream.download_mutex);

  std::atomic<float> startPosition{0};   // segments that end before it are skipped
  std::atomic<float> listedDuration{0};  // of an on-demand playlist; 0 once a frame is delivered
  std::atomic<float> queuedDuration{0};  // of all segments that the segment thread has taken
  std::atomic<float> position{0};        // end of the last segment processed, skipped or not
};

}  // namespace stream

#endif  // HLS_HLS_TASK_STATE_H_
