#include "common/frame_backlog.h"

#include <mutex>

#include "common/clock.h"
#include "common/frame_queue.h"

namespace {

bool IsFull(const FrameQueue* queue, const FrameBacklog& limit) {
  return queue != nullptr && (queue->count > limit.frames || queue->heldBytes > limit.bytes);
}

bool HasRoom(const FrameBacklog& limit) {
  const std::lock_guard lock(g_frameQueueMutex);
  return !IsFull(g_videoQueue, limit) && !IsFull(g_audioQueue, limit);
}

}  // namespace

void AwaitFrameRoom(const std::atomic<bool>& running, const FrameBacklog& limit) {
  while (running.load() && !HasRoom(limit)) SleepFor(std::chrono::milliseconds(1));
}
