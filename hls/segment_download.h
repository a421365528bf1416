// The segment thread: downloads queued segments one after another and hands each one over to the
// parse thread.
#ifndef HLS_SEGMENT_DOWNLOAD_H_
#define HLS_SEGMENT_DOWNLOAD_H_

#include <cstddef>

#include "hls/hls_pipeline.h"

// Runs until the pipeline is stopped. Segments that end before the start position are skipped. A
// failed download is not retried; the whole packets that it received are kept before the next
// segment. Kept for compatibility. A segment whose address serves another segment now is skipped.
// Reports to the player the duration queued so far and the position reached.
void DownloadPartsThread(HlsPipeline& pipeline);

// The write callback: appends to g_downloadBuffer. If a segment does not fit, the leftover of a
// failed download is dropped first; if it still does not fit, the whole segment is dropped. The
// caller that performs the transfer holds g_downloadMutex.
std::size_t TakeSegmentBytes(char* data, std::size_t size, std::size_t count, void* user);

#endif  // HLS_SEGMENT_DOWNLOAD_H_
