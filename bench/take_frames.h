// The consumer of the frame queues in benchmarks.
#ifndef BENCH_TAKE_FRAMES_H_
#define BENCH_TAKE_FRAMES_H_

#include <cstdint>

#include "bench/demux_totals.h"
#include "common/frame_queue.h"

// Looks whether a frame is there and takes it only then. Nothing else runs, so the look needs no
// lock here.
inline void TakeFrames(FrameQueue* queue, FrameNodePtr (*pop)(), DemuxTotals& totals) {
  while (queue != nullptr && queue->count != 0) {
    const FrameNodePtr frame = pop();
    totals.frames += 1;
    totals.bytes += static_cast<std::uint64_t>(frame->size);
  }
}

#endif  // BENCH_TAKE_FRAMES_H_
