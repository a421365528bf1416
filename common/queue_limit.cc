#include "common/queue_limit.h"

#include "common/clock.h"
#include "common/frame_queue.h"

namespace stream {
namespace {

bool IsFull(const FrameQueue* queue, const QueueLimit& limit) {
  return queue != nullptr && (queue->count > limit.frames || queue->heldBytes > limit.bytes);
}

bool HasSpace(const QueueLimit& limit) {
  const MutexLock lock(g_frameQueueMutex);
  return !IsFull(g_videoQueue, limit) && !IsFull(g_audioQueue, limit);
}

}  // namespace

void WaitForQueueSpace(const std::atomic<bool>& running, const QueueLimit& limit) {
  while (running.load() && !HasSpace(limit)) SleepFor(std::chrono::milliseconds(1));
}

}  // namespace stream
