// The playlist thread: fetches the playlist, reports it, and fetches a live playlist again every
// second.
#ifndef HLS_PLAYLIST_THREAD_H_
#define HLS_PLAYLIST_THREAD_H_

#include <string>

#include "hls/hls_task_state.h"

namespace stream {

// Runs until an on-demand playlist has been fetched; refreshes a live playlist until the pipeline
// is stopped. If the first request fails, a second one follows, for the cleaned address.
void PlaylistThread(HlsTaskState& hls, const std::string& url);

// Waits until the next refresh is due or the pipeline is stopped.
void PauseBetweenRefreshes(const HlsTaskState& hls);

}  // namespace stream

#endif  // HLS_PLAYLIST_THREAD_H_
