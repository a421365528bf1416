#include "common/frame_backlog.h"

#include <mutex>

#include "common/frame_queue.h"
#include "common/platform.h"

namespace {

bool IsFull(const FrameQueue* queue) { return queue != nullptr && queue->count > kMaxFrameBacklog; }

bool HasRoom() {
  const std::lock_guard lock(g_frameQueueMutex);
  return !IsFull(g_videoQueue) && !IsFull(g_audioQueue);
}

}  // namespace

void AwaitFrameRoom(const std::atomic<bool>& running) {
  while (running.load() && !HasRoom()) platform::SleepMilliseconds(1);
}
