// Which frames the delivery tasks of the HLS pipeline pass on, and the frame that they skip after a
// stop.
#ifndef HLS_HLS_DELIVERY_H_
#define HLS_HLS_DELIVERY_H_

#include <atomic>
#include <cstdint>

#include "common/frame_delivery.h"
#include "hls/hls_task_state.h"

namespace stream {

// Returns the filters of the two delivery tasks. They skip frames after a stop, and reset
// `listedDuration` at each frame of their kind. `hls` must outlive them.
FrameFilters HlsFrameFilters(HlsTaskState& hls);

// Returns whether to skip a frame. True while the counter is negative; each such call increments
// it. After a second start, two threads may deliver frames of one kind: each skip is still counted
// once.
bool CountSkippedFrame(std::atomic<std::int32_t>& skip);

}  // namespace stream

#endif  // HLS_HLS_DELIVERY_H_
