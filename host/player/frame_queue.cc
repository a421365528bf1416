#include "frame_queue.h"

#include <utility>

namespace player {
namespace {

// The absolute difference: video frames are queued in decode order, and times may jump.
double SpanSeconds(const std::deque<MediaUnit>& units) {
  if (units.empty()) return 0;
  const std::uint64_t first = units.front().pts;
  const std::uint64_t last = units.back().pts;
  return SecondsOf(last > first ? last - first : first - last);
}

// Approximate memory use of a unit.
std::size_t CostOf(const MediaUnit& unit) {
  constexpr std::size_t kOfABlock = 32;
  return unit.data.size() + sizeof(MediaUnit) + kOfABlock;
}

Kind OtherThan(Kind kind) { return kind == Kind::kVideo ? Kind::kAudio : Kind::kVideo; }

}  // namespace

bool FrameQueue::Push(Kind kind, MediaUnit unit) {
  std::unique_lock lock(mutex_);
  LaneOf(kind).seen = true;
  changed_.wait(lock, [&] { return closed_ || HasSpace(kind); });
  if (closed_) return false;
  Lane& lane = LaneOf(kind);
  lane.bytes += CostOf(unit);
  lane.units.push_back(std::move(unit));
  changed_.notify_all();
  return true;
}

std::optional<MediaUnit> FrameQueue::Pop(Kind kind, bool until_end) {
  std::unique_lock lock(mutex_);
  Lane& lane = LaneOf(kind);
  lane.busy = false;
  changed_.wait(lock, [&] { return closed_ || !lane.units.empty() || (until_end && ended_); });
  if (closed_ || lane.units.empty()) return std::nullopt;
  MediaUnit unit = std::move(lane.units.front());
  lane.units.pop_front();
  lane.bytes -= CostOf(unit);
  lane.busy = true;
  changed_.notify_all();
  return unit;
}

void FrameQueue::SetEnded(bool ended) {
  const std::lock_guard lock(mutex_);
  if (std::exchange(ended_, ended) != ended) changed_.notify_all();
}

bool FrameQueue::HasEnded() const {
  const std::lock_guard lock(mutex_);
  return ended_;
}

void FrameQueue::Close() {
  const std::lock_guard lock(mutex_);
  closed_ = true;
  lanes_ = {};
  changed_.notify_all();
}

bool FrameQueue::IsEmpty(Kind kind) const {
  const std::lock_guard lock(mutex_);
  return LaneOf(kind).units.empty();
}

bool FrameQueue::IsFull(Kind kind) const {
  const std::lock_guard lock(mutex_);
  return LaneIsFull(LaneOf(kind));
}

double FrameQueue::Seconds(Kind kind) const {
  const std::lock_guard lock(mutex_);
  return SpanSeconds(LaneOf(kind).units);
}

bool FrameQueue::IsIdle() const {
  const std::lock_guard lock(mutex_);
  for (const Lane& lane : lanes_) {
    if (lane.busy || !lane.units.empty()) return false;
  }
  return true;
}

bool FrameQueue::LaneIsFull(const Lane& lane) const {
  return lane.bytes >= limits_.bytes || SpanSeconds(lane.units) >= limits_.seconds;
}

bool FrameQueue::HasSpace(Kind kind) const {
  const Lane& own = LaneOf(kind);
  if (!LaneIsFull(own)) return true;
  const Lane& other = LaneOf(OtherThan(kind));
  const bool other_starves = other.seen && other.units.empty();
  return other_starves && own.bytes < limits_.hard_bytes;
}

}  // namespace player
