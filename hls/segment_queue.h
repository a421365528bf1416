// What a live playlist, or one of variants, names: which of its segments are new, and their way to
// the segment thread.
#ifndef HLS_SEGMENT_QUEUE_H_
#define HLS_SEGMENT_QUEUE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "hls/hls_pipeline.h"
#include "hls/hls_state.h"
#include "hls/m3u8_playlist.h"
#include "hls/taken_segments.h"

// No more segments than this wait; what a live playlist lists beyond it is left for a later
// refresh.
inline constexpr std::size_t kMaxWaitingSegments = 500'000;

// Parses `text`, the body of a download of `playlistUrl`, and queues its new segments.
// Whatever is not a segment (its address has no ".ts" in it) is fetched as a variant playlist, the
// slowest first; where several variants list a segment of the same index, the slowest wins. The
// addresses of a variant are resolved against `playlistUrl` on purpose. A body without "#EXTM3U"
// changes nothing. Returns whether it had one. Takes g_playlistMutex.
bool QueueSegmentsFromPlaylist(HlsPipeline& pipeline, const std::string& playlistUrl,
                               const std::string& text);

// Queues every entry of an on-demand playlist, whatever its address is, and adds up their
// durations. Prints how many there are. The segment thread wakes also where there are none.
void QueueAllSegments(HlsPipeline& pipeline, const M3u8Table& entries);

// Forgets what waits, and what the playlist listed.
void ClearSegmentQueue();

// What the segment thread has met so far.
struct SegmentHistory {
  TakenSegments taken;
  std::uint64_t epoch = 0;  // of the sequence numbers that they belong to
};

// Waits until segments or an on-demand playlist are queued or the pipeline is stopped, then takes
// all pending segments but those that were taken before, and adds up their durations. May be empty.
std::vector<QueuedSegment> TakeQueuedSegments(HlsPipeline& pipeline, SegmentHistory& history);

// Whether the address of a segment that was taken names another segment by now.
bool IsReplaced(const QueuedSegment& segment);

// Sleeps until the next refresh is due, or until the pipeline is stopped.
void PauseBetweenRefreshes(const HlsPipeline& pipeline);

#endif  // HLS_SEGMENT_QUEUE_H_
