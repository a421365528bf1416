// A limit for pending frames. It pauses the parser of a stream that makes very many frames out of
// very few bytes, or that continues while a player blocks. The queues themselves have no limit. An
// ordinary stream stays far below this one.
#ifndef COMMON_QUEUE_LIMIT_H_
#define COMMON_QUEUE_LIMIT_H_

#include <atomic>
#include <cstdint>

#include "common/frame_queue.h"

namespace stream {

// The number of frames and bytes that may be pending before a parser pauses.
struct QueueLimit {
  std::uint32_t frames;
  std::uint64_t bytes;
};

// Far more than an ordinary player leaves pending: 22 hours of frames at 50 frames a second.
inline constexpr QueueLimit kDefaultQueueLimit = {4'000'000, std::uint64_t{3} << 30};

// Blocks while one of the two queues exceeds `limit`, until `running` is cleared. Called by
// parsers.
void WaitForQueueSpace(const std::atomic<bool>& running, const QueueLimit& limit)
    EXCLUDES(g_frameQueueMutex);

}  // namespace stream

#endif  // COMMON_QUEUE_LIMIT_H_
