// The segment thread: downloads queued segments, one after the other, and hands each of them to the
// parse thread.
#ifndef HLS_SEGMENT_DOWNLOAD_H_
#define HLS_SEGMENT_DOWNLOAD_H_

#include <cstddef>

#include "hls/hls_pipeline.h"

// Runs until the pipeline is stopped. Segments that end before the start position are passed over;
// a download that fails is not tried again, and what came of it stays in front of the next segment
// (kept on purpose). Tells the player the duration queued so far and the position reached.
void DownloadPartsThread(HlsPipeline& pipeline);

// The write callback: appends to g_downloadBuffer. A segment that does not fit is given up whole;
// but what a failed download left in front of it gives way first.
// With g_downloadMutex held by whoever performs the transfer.
std::size_t TakeSegmentBytes(char* data, std::size_t size, std::size_t count, void* user);

#endif  // HLS_SEGMENT_DOWNLOAD_H_
