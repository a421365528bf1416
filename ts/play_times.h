// Spreads play times evenly over queued frames. Only some frames carry a larger PTS than all before
// them (with B-frames, not every one does); those become anchors, and the frames between two
// anchors get play times in equal steps.
#ifndef TS_PLAY_TIMES_H_
#define TS_PLAY_TIMES_H_

#include <cstdint>
#include <optional>

#include "common/frame_queue.h"

// The state for one queue since its last reset. Use it with g_frameQueueMutex held.
//
// A delivery thread may have taken and released the node of an anchor already, so an anchor is
// known by its place in the order of pushes, and its node is looked at only while that place is
// still queued. The nodes still queued get the values they would get if none had been taken.
class PlayTimeSpreader {
 public:
  // The play time that a frame starts with: its distance from the base, 0 while there is no base.
  std::uint64_t InitialPlayTime(std::uint64_t pts) const;

  // To be called once for each frame right after it was pushed onto `queue`, always the same queue.
  void FramePushed(const FrameQueue& queue);

 private:
  struct Anchor {
    std::uint64_t pts;    // 90 kHz
    std::uint64_t place;  // in the queue, as FrameQueue counts
    FrameNode* node;      // released when the place is before the queue's first
  };

  float Step(std::uint64_t node_count) const;
  void Assign(const FrameQueue& queue, float step) const;

  std::uint64_t base_ = 0;  // the PTS that play time 0 stands for; 0 for none yet
  std::optional<Anchor> anchor_;
  std::optional<Anchor> prev_anchor_;
};

#endif  // TS_PLAY_TIMES_H_
