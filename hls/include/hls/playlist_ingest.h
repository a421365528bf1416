// Queues the segments of a fetched playlist: of a live one those that are new, of an on-demand one
// all.
#ifndef HLS_PLAYLIST_INGEST_H_
#define HLS_PLAYLIST_INGEST_H_

#include <string>

#include "hls/hls_task_state.h"
#include "hls/playlist/m3u8_playlist.h"

namespace stream {

// Parses `text`, a body fetched from `playlistUrl`, and queues its new segments. An entry that is
// not a segment (its address does not contain ".ts") is fetched as a variant playlist, the slowest
// first. If several variants list a segment with the same index, the slowest variant wins. The
// addresses in a variant are resolved against `playlistUrl`. Kept for compatibility. A body without
// "#EXTM3U" changes nothing. Returns whether the body has it.
bool QueueSegmentsFromPlaylist(HlsTaskState& hls, const std::string& playlistUrl,
                               const std::string& text) EXCLUDES(hls.stream.playlist_mutex);

// Queues every entry of an on-demand playlist, whatever its address is, and adds up the durations.
// Prints the number of entries. Wakes the segment thread even if there are none.
void QueueAllSegments(HlsTaskState& hls, const M3u8Table& entries);

}  // namespace stream

#endif  // HLS_PLAYLIST_INGEST_H_
