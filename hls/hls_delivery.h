// The delivery threads of the HLS pipeline. After a stop the next run skips its first video frame.
#ifndef HLS_HLS_DELIVERY_H_
#define HLS_HLS_DELIVERY_H_

#include <atomic>
#include <cstdint>

#include "hls/hls_pipeline.h"

// Each runs on a thread of its own until the pipeline is stopped.
void DeliverHlsVideo(HlsPipeline& pipeline);
void DeliverHlsAudio(HlsPipeline& pipeline);

// Returns whether to skip a frame. True while the counter is negative; each such call increments
// it. After a second start, two threads may deliver frames of one kind: each skip is still counted
// once.
bool CountSkippedFrame(std::atomic<std::int32_t>& skip);

#endif  // HLS_HLS_DELIVERY_H_
