// The playlist thread: fetches the playlist, reports it, and for a live stream fetches it again
// every second.
#ifndef HLS_PLAYLIST_THREAD_H_
#define HLS_PLAYLIST_THREAD_H_

#include <string>

#include "hls/hls_pipeline.h"

// Runs until the playlist was had, for one that is on demand, or until the pipeline is stopped. A
// playlist that cannot be had is tried twice.
void PlaylistThread(HlsPipeline& pipeline, const std::string& url);

#endif  // HLS_PLAYLIST_THREAD_H_
