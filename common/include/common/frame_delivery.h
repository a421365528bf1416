// The two delivery loops of every pipeline. They pop frames from the global queues and pass them to
// the player, each at most one frame a millisecond. The player does the pacing.
#ifndef COMMON_FRAME_DELIVERY_H_
#define COMMON_FRAME_DELIVERY_H_

#include <atomic>
#include <functional>
#include <string>

#include "common/frame_queue.h"
#include "common/player_port.h"

namespace stream {

// Called once for each frame, on the delivery thread. If it returns false, the frame is dropped. An
// empty filter delivers every frame.
using FrameFilter = std::function<bool(const FrameRecord&)>;

struct FrameFilters {
  FrameFilter video;
  FrameFilter audio;
};

struct DeliveryLoop {
  const std::atomic<bool>& running;  // the loop ends when it is cleared
  PlayerPort player;
  FrameFilter wanted;
  std::string stop_line;  // logged when the loop has ended
};

// Each function blocks until the run flag is cleared. Call each on a thread of its own.
void DeliverVideoFrames(const DeliveryLoop& loop);
void DeliverAudioFrames(const DeliveryLoop& loop);

}  // namespace stream

#endif  // COMMON_FRAME_DELIVERY_H_
