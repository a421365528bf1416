// Distributes play times evenly over queued frames. A frame whose PTS is larger than that of all
// frames before it is an anchor; with B-frames, not every frame is one. The frames between two
// anchors get play times in equal steps.
#ifndef TS_PLAY_TIMES_H_
#define TS_PLAY_TIMES_H_

#include <cstdint>
#include <optional>

#include "common/frame_queue.h"

namespace stream {

// The state of one queue since its last reset.
//
// A delivery thread may already have popped and released the node of an anchor. Therefore an anchor
// is identified by its sequence number, and its node is accessed only while that number is still
// queued. The queued nodes get the values that they would get if none had been popped.
class PlayTimeInterpolator {
 public:
  // Returns the play time of a new frame: the distance of its PTS from the base, or 0 without a
  // base.
  std::uint64_t InitialPlayTime(std::uint64_t pts) const;

  // Call it once for each frame, right after the frame was pushed onto `queue`. Always pass the
  // same queue.
  void FramePushed(const FrameQueue& queue) REQUIRES(g_frameQueueMutex);

 private:
  struct Anchor {
    std::uint64_t pts;       // 90 kHz
    std::uint64_t sequence;  // of the node (FrameQueue::pushed)
    FrameNode* node;         // released if `sequence` is before the queue's first
  };

  float Step(std::uint64_t node_count) const;
  void Assign(const FrameQueue& queue, float step) const REQUIRES(g_frameQueueMutex);

  std::uint64_t base_ = 0;  // the PTS of play time 0; 0 if there is none yet
  std::optional<Anchor> anchor_;
  std::optional<Anchor> prev_anchor_;
};

}  // namespace stream

#endif  // TS_PLAY_TIMES_H_
