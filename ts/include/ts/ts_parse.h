// The parse side of the TS pipeline: feeds whole packets from g_tsStreamBuffer to the
// demultiplexer.
#ifndef TS_TS_PARSE_H_
#define TS_TS_PARSE_H_

#include <cstdint>

#include "common/frame_queue.h"
#include "common/player_port.h"

namespace stream {

// Parses received packets until g_tsRunning is cleared, and reports the growing duration to
// `player`. Blocks. The bytes in g_tsStreamBuffer are aligned to packets.
void ParseTs(const PlayerPort& player);

// Computes the reported duration from the first and the last frame of the video queue.
class TsDurationReport {
 public:
  // Returns the time span of the video demultiplexed so far, in seconds, if it has grown since the
  // last call; otherwise a negative number. `queue` may be null.
  float Update(const FrameQueue* queue) REQUIRES(g_frameQueueMutex);

 private:
  std::uint64_t first_pts_ = 0;
  std::uint64_t newest_pts_ = 0;
};

}  // namespace stream

#endif  // TS_TS_PARSE_H_
