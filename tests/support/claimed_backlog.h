// Frames that seem to wait for delivery: for tests of who waits for them to be taken.
#ifndef TESTS_SUPPORT_CLAIMED_BACKLOG_H_
#define TESTS_SUPPORT_CLAIMED_BACKLOG_H_

#include <cstdint>
#include <mutex>

#include "common/frame_backlog.h"
#include "common/frame_queue.h"

// From now on so much seems to wait in the video queue, which has to be there and empty.
inline void ClaimBacklog(std::uint32_t frames, std::uint64_t bytes) {
  const std::lock_guard lock(g_frameQueueMutex);
  g_videoQueue->count = frames;
  g_videoQueue->heldBytes = bytes;
}

// One byte more than a parser lets wait.
inline void ClaimTooManyBytes() { ClaimBacklog(0, kMaxFrameBacklog.bytes + 1); }

inline void ClaimNothing() { ClaimBacklog(0, 0); }

#endif  // TESTS_SUPPORT_CLAIMED_BACKLOG_H_
