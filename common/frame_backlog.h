// A bound for streams that make very many frames out of very few bytes. The queues themselves have
// none, and an ordinary stream is far below this one.
#ifndef COMMON_FRAME_BACKLOG_H_
#define COMMON_FRAME_BACKLOG_H_

#include <atomic>
#include <cstdint>

// As many frames wait for delivery at most before a parser pauses: more than three minutes' worth
// at the rate of delivery.
inline constexpr std::uint32_t kMaxFrameBacklog = 200'000;

// Waits while more frames than that are queued, until `running` is cleared. For the parse side.
void AwaitFrameRoom(const std::atomic<bool>& running);

#endif  // COMMON_FRAME_BACKLOG_H_
