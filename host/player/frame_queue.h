// What waits between the component, which hands frames over as fast as they come, and the decoders.
//
// Bounded by making the giver wait, never by dropping. A kind is full when it holds that much
// stream time or that many bytes. Where the component's parser waits for room too, a kind that is
// made to wait may be what keeps the other from coming: while the other kind has run empty, a full
// one still takes frames, up to the hard limit.
//
// Safe from any thread: one gives and one takes for each kind, and anybody may close.
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
  std::size_t hard_bytes = std::size_t{256} << 20;  // for a kind that may go beyond the two
};

class FrameQueue {
 public:
  explicit FrameQueue(const QueueLimits& limits) : limits_(limits) {}

  // Waits while there is no room. False when the queue was closed; then the unit is gone.
  bool Push(Kind kind, MediaUnit unit);

  // The oldest unit, waited for; nothing when the queue is closed and, with `until_end`, when none
  // is left and the stream has ended. Whoever asks for the next one has done with the one before.
  std::optional<MediaUnit> Pop(Kind kind, bool until_end);

  // Whether the stream has ended, as far as is known: units may be received again all the same.
  void SetEnded(bool ended);
  bool HasEnded() const;

  // Lets everybody go who waits, empties the queue, and keeps it closed.
  void Close();

  bool IsEmpty(Kind kind) const;
  bool IsFull(Kind kind) const;
  // The stream time that waits, in seconds.
  double Seconds(Kind kind) const;
  // Whether nothing waits and nobody is at work with what was taken last.
  bool IsIdle() const;

 private:
  struct Lane {
    std::deque<MediaUnit> units;
    std::size_t bytes = 0;
    bool seen = false;  // whether a unit of the kind has ever come
    bool busy = false;  // whether the last unit taken is still worked with
  };

  // All with mutex_ held.
  const Lane& LaneOf(Kind kind) const { return lanes_[kind == Kind::kVideo ? 0 : 1]; }
  Lane& LaneOf(Kind kind) { return lanes_[kind == Kind::kVideo ? 0 : 1]; }
  bool LaneIsFull(const Lane& lane) const;
  bool HasRoom(Kind kind) const;

  const QueueLimits limits_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  std::array<Lane, 2> lanes_;  // guarded by mutex_
  bool ended_ = false;         // guarded by mutex_
  bool closed_ = false;        // guarded by mutex_
};

}  // namespace player

#endif  // HOST_PLAYER_FRAME_QUEUE_H_
