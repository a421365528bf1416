// The delivery threads of the HLS pipeline and the one frame that they leave out.
#ifndef HLS_HLS_DELIVERY_H_
#define HLS_HLS_DELIVERY_H_

#include <atomic>
#include <cstdint>

#include "hls/hls_pipeline.h"

// Each runs on a thread of its own until the pipeline is stopped.
void DeliverHlsVideo(HlsPipeline& pipeline);
void DeliverHlsAudio(HlsPipeline& pipeline);

// After a stop the first video frame of the next run is left out, and no audio frame is: kept on
// purpose.
void SkipFirstVideoFrame();

// Delivers every frame of the next run, as before the first stop of the process. For tests.
void SkipNoFrame();

// Whether a frame is left out, which a negative counter asks for; it is counted then. Each is left
// out once, also where a second start has two threads deliver frames of one kind.
bool CountSkippedFrame(std::atomic<std::int32_t>& skip);

#endif  // HLS_HLS_DELIVERY_H_
