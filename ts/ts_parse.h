// The parse side of the TS pipeline: whole packets from g_tsStreamBuffer into the demultiplexer.
#ifndef TS_TS_PARSE_H_
#define TS_TS_PARSE_H_

#include <cstdint>

#include "common/frame_queue.h"
#include "common/player_port.h"

// Parses what is staged, as it comes, until g_tsRunning is cleared, and reports the growing
// duration to `player`. Blocks. What is staged is aligned to packets.
void ParseTs(const PlayerPort& player);

// Works out the duration report from the ends of the video queue.
class TsDurationReport {
 public:
  // The span of video demultiplexed so far, in seconds, when it has grown since the last call; else
  // a negative number. `queue` may be null. With g_frameQueueMutex held.
  float Update(const FrameQueue* queue);

 private:
  std::uint64_t first_pts_ = 0;
  std::uint64_t newest_pts_ = 0;
};

#endif  // TS_TS_PARSE_H_
