// The segment thread: downloads queued segments, one after the other, and hands each of them to the
// parse thread.
#ifndef HLS_SEGMENT_DOWNLOAD_H_
#define HLS_SEGMENT_DOWNLOAD_H_

#include <cstddef>

#include "hls/hls_pipeline.h"

// Runs until the pipeline is stopped. Segments that end before the start position are skipped. A
// download that fails is not repeated; the whole packets that it received stay before the next
// segment (kept for compatibility). A segment whose address names another one by now is skipped
// like one that failed. Reports the duration queued so far and the position reached to the player.
void DownloadPartsThread(HlsPipeline& pipeline);

// The write callback: appends to g_downloadBuffer. A segment that does not fit is given up whole;
// but what a failed download left in front of it gives way first.
// With g_downloadMutex held by whoever performs the transfer.
std::size_t TakeSegmentBytes(char* data, std::size_t size, std::size_t count, void* user);

#endif  // HLS_SEGMENT_DOWNLOAD_H_
