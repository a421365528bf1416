// What the tasks of one HLS pipeline share. CM3u8Downloader owns it; the tasks borrow it and end
// before it does.
#ifndef HLS_HLS_PIPELINE_H_
#define HLS_HLS_PIPELINE_H_

#include <atomic>
#include <chrono>

#include "common/http_transfer.h"
#include "common/player_port.h"

// Durations and positions are in seconds. What is not atomic is set before the first task runs.
struct HlsPipeline {
  PlayerPort player;
  std::atomic<bool> running{false};  // every task loops on it

  // A playlist or segment that receives no byte for so long has failed, so that one connection that
  // hangs does not end a live stream.
  std::chrono::milliseconds silence_limit{10'000};

  // Handles for the whole life of the pipeline; where one could not be made, what it is for is
  // left undone. The first two are guarded by g_playlistMutex, the third by g_downloadMutex.
  CurlHandle variantHandle;
  CurlHandle playlistHandle;
  CurlHandle segmentHandle;

  std::atomic<float> startPosition{0};   // segments that end before it are passed over
  std::atomic<float> listedDuration{0};  // of an on-demand playlist; 0 once a frame is delivered
  std::atomic<float> queuedDuration{0};  // of all segments that the segment thread has taken
  std::atomic<float> position{0};        // end of the segment walked last, passed over or not
};

#endif  // HLS_HLS_PIPELINE_H_
