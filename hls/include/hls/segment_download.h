// The segment thread: downloads queued segments one after another and hands each one over to the
// parse thread.
#ifndef HLS_SEGMENT_DOWNLOAD_H_
#define HLS_SEGMENT_DOWNLOAD_H_

#include <cstddef>
#include <vector>

#include "hls/hls_task_state.h"

namespace stream {

// Waits until segments or an on-demand playlist are queued or the pipeline is stopped. Then empties
// the queue, drops the segments that were taken before, adds up the durations of the others and
// returns them. The result may be empty.
std::vector<QueuedSegment> PopQueuedSegments(HlsTaskState& hls, SegmentHistory& history);

// Runs until the pipeline is stopped. Segments that end before the start position are skipped. A
// failed download is not retried; the whole packets that it received stay in the buffer, before
// the next segment. Kept for compatibility. A segment whose address serves another segment now is
// skipped. Reports to the player the duration queued so far and the position reached.
void DownloadPartsThread(HlsTaskState& hls);

// The write callback: appends to g_downloadBuffer of the HlsStream to which `user` points. If a
// segment does not fit, the leftover of a failed download is dropped first; if it still does not
// fit, the whole segment is dropped. The caller that performs the transfer holds download_mutex.
std::size_t OnSegmentBytes(char* data, std::size_t size, std::size_t count, void* user);

}  // namespace stream

#endif  // HLS_SEGMENT_DOWNLOAD_H_
