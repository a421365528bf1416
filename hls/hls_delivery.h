// The delivery threads of the HLS pipeline and the one frame that they leave out.
#ifndef HLS_HLS_DELIVERY_H_
#define HLS_HLS_DELIVERY_H_

#include "hls/hls_pipeline.h"

// Each runs on a thread of its own until the pipeline is stopped.
void DeliverHlsVideo(HlsPipeline& pipeline);
void DeliverHlsAudio(HlsPipeline& pipeline);

// After a stop the first video frame of the next run is left out, and no audio frame is: kept on
// purpose.
void SkipFirstVideoFrame();

#endif  // HLS_HLS_DELIVERY_H_
