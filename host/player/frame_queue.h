// The queues between the component, which delivers frames as fast as it receives them, and the
// decoders.
//
// When a queue is full, the producer waits; nothing is dropped. A kind is full when its queue
// reaches a limit of stream time or of bytes. The component's parser also stops when too many
// frames are pending, so blocking one kind could prevent the other from arriving. Therefore a full
// queue still accepts frames, up to the hard limit, while the queue of the other kind has run
// empty.
//
// Safe from any thread: one producer and one consumer for each kind. Any thread may close the
// queue.
#ifndef HOST_PLAYER_FRAME_QUEUE_H_
#define HOST_PLAYER_FRAME_QUEUE_H_

#include <array>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>

#include "media_unit.h"

namespace player {

struct QueueLimits {
  double seconds = 5;                               // of stream time, for each kind
  std::size_t bytes = std::size_t{64} << 20;        // for each kind
  std::size_t hard_bytes = std::size_t{256} << 20;  // limit while the other kind has run empty
};

class FrameQueue {
 public:
  explicit FrameQueue(const QueueLimits& limits) : limits_(limits) {}

  // Waits for space. Returns false if the queue was closed; the unit is then dropped.
  bool Push(Kind kind, MediaUnit unit);

  // Waits for the oldest unit and removes it. Returns nullopt if the queue is closed or, with
  // `until_end`, if the stream has ended and the queue is empty. A call also marks the previous
  // unit as processed.
  std::optional<MediaUnit> Pop(Kind kind, bool until_end);

  // Whether the stream counts as ended. Units may still be received afterwards.
  void SetEnded(bool ended);
  bool HasEnded() const;

  // Releases all waiting threads, empties the queue and keeps it closed.
  void Close();

  bool IsEmpty(Kind kind) const;
  bool IsFull(Kind kind) const;
  // The stream time of the queued units, in seconds.
  double Seconds(Kind kind) const;
  // Whether the queues are empty and the units taken from them have been processed.
  bool IsIdle() const;

 private:
  struct Lane {
    std::deque<MediaUnit> units;
    std::size_t bytes = 0;
    bool seen = false;  // whether a unit of this kind was ever received
    bool busy = false;  // whether the last unit taken is still being processed
  };

  // All with mutex_ held.
  const Lane& LaneOf(Kind kind) const { return lanes_[kind == Kind::kVideo ? 0 : 1]; }
  Lane& LaneOf(Kind kind) { return lanes_[kind == Kind::kVideo ? 0 : 1]; }
  bool LaneIsFull(const Lane& lane) const;
  bool HasSpace(Kind kind) const;

  const QueueLimits limits_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::array<Lane, 2> lanes_;  // guarded by mutex_
  bool ended_ = false;         // guarded by mutex_
  bool closed_ = false;        // guarded by mutex_
};

}  // namespace player

#endif  // HOST_PLAYER_FRAME_QUEUE_H_
