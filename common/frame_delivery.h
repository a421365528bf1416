// The two delivery loops that every pipeline runs: they take frames from the global queues and hand
// them to the player, at most one a millisecond each. Pacing to the clock is the player's business.
#ifndef COMMON_FRAME_DELIVERY_H_
#define COMMON_FRAME_DELIVERY_H_

#include <atomic>
#include <functional>
#include <string_view>

#include "common/frame_queue.h"
#include "common/player_port.h"

struct DeliveryLoop {
  const std::atomic<bool>& running;  // the loop ends when it is cleared
  PlayerPort player;
  // Asked once for each frame, on the delivery thread: false releases the frame unseen. Empty
  // delivers every frame.
  std::function<bool(const FrameRecord&)> wanted;
  std::string_view stop_line;  // written to the console when the loop has ended
};

// Each runs on a thread of its own until the run flag is cleared.
void DeliverVideoFrames(const DeliveryLoop& loop);
void DeliverAudioFrames(const DeliveryLoop& loop);

#endif  // COMMON_FRAME_DELIVERY_H_
