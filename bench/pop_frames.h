// The consumer of the frame queues in benchmarks.
#ifndef BENCH_POP_FRAMES_H_
#define BENCH_POP_FRAMES_H_

#include <cstdint>

#include "bench/demux_totals.h"
#include "common/frame_queue.h"

namespace stream {

// Pops all frames. No other thread runs, so reading the count needs no lock.
inline void PopFrames(FrameQueue* queue, FrameNodePtr (*pop)(), DemuxTotals& totals) {
  while (queue != nullptr && queue->count != 0) {
    const FrameNodePtr frame = pop();
    totals.frames += 1;
    totals.bytes += static_cast<std::uint64_t>(frame->size);
  }
}

}  // namespace stream

#endif  // BENCH_POP_FRAMES_H_
