// Makes the video queue claim a backlog, for tests of the code that waits for queued frames to be
// delivered.
#ifndef TESTS_SUPPORT_CLAIMED_BACKLOG_H_
#define TESTS_SUPPORT_CLAIMED_BACKLOG_H_

#include <cstdint>
#include <mutex>

#include "common/frame_queue.h"
#include "common/queue_limit.h"

namespace stream {

// Makes the video queue claim this many frames and bytes. The queue must exist and be empty.
inline void ClaimBacklog(std::uint32_t frames, std::uint64_t bytes) {
  const std::lock_guard lock(g_frameQueueMutex);
  g_videoQueue->count = frames;
  g_videoQueue->heldBytes = bytes;
}

// One byte more than the limit above which a parser waits.
inline void ClaimTooManyBytes() { ClaimBacklog(0, kDefaultQueueLimit.bytes + 1); }

inline void ClaimNothing() { ClaimBacklog(0, 0); }

}  // namespace stream

#endif  // TESTS_SUPPORT_CLAIMED_BACKLOG_H_
