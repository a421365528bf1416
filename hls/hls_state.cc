#include "hls/hls_state.h"

namespace {

SegmentBuffer g_firstBuffer;
SegmentBuffer g_secondBuffer;

}  // namespace

std::mutex g_playlistMutex;
NeverDestroyed<std::string> g_playlistText;
NeverDestroyed<std::string> g_variantText;

std::mutex g_segmentQueueMutex;
NeverDestroyed<std::vector<QueuedSegment>> g_segmentQueue;
NeverDestroyed<std::set<std::pair<std::uint64_t, std::string>>> g_replacedSegments;
NeverDestroyed<std::condition_variable> g_segmentQueueCond;

std::mutex g_downloadMutex;
SegmentBuffer* g_downloadBuffer = &g_firstBuffer;
std::int32_t g_downloadLength = 0;

SegmentBuffer* g_parseBuffer = &g_secondBuffer;
std::atomic<std::int32_t> g_parseLength{0};

namespace {

std::mutex g_activeMutex;
const HlsPipeline* g_activeM3u8 = nullptr;  // guarded by g_activeMutex

}  // namespace

void SetActiveM3u8(const HlsPipeline* pipeline) {
  const std::lock_guard lock(g_activeMutex);
  g_activeM3u8 = pipeline;
}

void ForgetActiveM3u8(const HlsPipeline* pipeline) {
  const std::lock_guard lock(g_activeMutex);
  if (g_activeM3u8 == pipeline) g_activeM3u8 = nullptr;
}

bool ActiveM3u8Runs() {
  const std::lock_guard lock(g_activeMutex);
  return g_activeM3u8 != nullptr && g_activeM3u8->running.load();
}

void WakeHlsTasks() {
  // Locked once, so that no task is between checking its condition and waiting.
  { const std::lock_guard lock(g_segmentQueueMutex); }
  g_segmentQueueCond->notify_all();
}
