// A bound for streams that make very many frames out of very few bytes, or that come while a player
// waits. The queues themselves have none, and an ordinary stream is far below this one.
#ifndef COMMON_FRAME_BACKLOG_H_
#define COMMON_FRAME_BACKLOG_H_

#include <atomic>
#include <cstdint>

// As many frames and bytes may wait for delivery before a parser pauses.
struct FrameBacklog {
  std::uint32_t frames;
  std::uint64_t bytes;
};

// Far more than an ordinary player leaves waiting: at 50 frames a second 22 hours of them.
inline constexpr FrameBacklog kMaxFrameBacklog = {4'000'000, std::uint64_t{3} << 30};

// Waits while more than that is in one of the queues, until `running` is cleared. For the parse
// side.
void AwaitFrameRoom(const std::atomic<bool>& running, const FrameBacklog& limit);

#endif  // COMMON_FRAME_BACKLOG_H_
