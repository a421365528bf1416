// The queue between the playlist thread and the segment thread. Decides which segments of a live
// playlist, or of its variants, are new.
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

// Capacity of the queue. Segments of a live playlist that do not fit wait for a later refresh.
inline constexpr std::size_t kMaxWaitingSegments = 500'000;

// Parses `text`, a body fetched from `playlistUrl`, and queues its new segments. An entry that is
// not a segment (its address does not contain ".ts") is fetched as a variant playlist, the slowest
// first. If several variants list a segment with the same index, the slowest variant wins. The
// addresses in a variant are resolved against `playlistUrl`. Kept for compatibility. A body without
// "#EXTM3U" changes nothing. Returns whether the body has it. Locks g_playlistMutex.
bool QueueSegmentsFromPlaylist(HlsPipeline& pipeline, const std::string& playlistUrl,
                               const std::string& text);

// Queues every entry of an on-demand playlist, whatever its address is, and adds up the durations.
// Prints the number of entries. Wakes the segment thread even if there are none.
void QueueAllSegments(HlsPipeline& pipeline, const M3u8Table& entries);

// Clears the queue and all that is known about the listed segments.
void ClearSegmentQueue();

// The segments that the segment thread has taken so far.
struct SegmentHistory {
  TakenSegments taken;
  std::uint64_t epoch = 0;  // `taken` belongs to this epoch
};

// Waits until segments or an on-demand playlist are queued or the pipeline is stopped. Then empties
// the queue, drops the segments that were taken before, adds up the durations of the others and
// returns them. The result may be empty.
std::vector<QueuedSegment> TakeQueuedSegments(HlsPipeline& pipeline, SegmentHistory& history);

// Returns whether the address of a segment from the queue serves another segment now.
bool IsReplaced(const QueuedSegment& segment);

// Waits until the next refresh is due or the pipeline is stopped.
void PauseBetweenRefreshes(const HlsPipeline& pipeline);

#endif  // HLS_SEGMENT_QUEUE_H_
