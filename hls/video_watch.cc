#include "hls/video_watch.h"

#include <mutex>
#include <utility>

#include "common/frame_queue.h"

VideoWatch::Place VideoWatch::Look() {
  const std::lock_guard lock(g_frameQueueMutex);
  return {FrameQueueRun(), g_videoQueue == nullptr ? 0 : g_videoQueue->pushed};
}

bool VideoWatch::HasCome() {
  if (has_come_) return true;
  const Place now = Look();
  const Place before = std::exchange(last_, now);
  has_come_ = now.pushed > (now.run == before.run ? before.pushed : 0);
  return has_come_;
}
