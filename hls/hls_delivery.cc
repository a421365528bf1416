#include "hls/hls_delivery.h"

#include <atomic>
#include <cstdint>

namespace {

// While a counter is negative, each frame is skipped and counted.
std::atomic<std::int32_t> g_videoSkip{0};
std::atomic<std::int32_t> g_audioSkip{0};

// `is_video` is the isVideo value of the frames.
FrameFilter FilterOf(HlsPipeline& pipeline, std::uint32_t is_video,
                     std::atomic<std::int32_t>& skip) {
  return [&pipeline, is_video, &skip](const FrameRecord& frame) {
    if (frame.isVideo == is_video && pipeline.listedDuration.load() > 0) {
      pipeline.listedDuration = 0;
    }
    return !CountSkippedFrame(skip);
  };
}

}  // namespace

bool CountSkippedFrame(std::atomic<std::int32_t>& skip) {
  std::int32_t count = skip.load();
  while (count < 0) {
    if (skip.compare_exchange_weak(count, count + 1)) return true;
  }
  return false;
}

FrameFilters HlsFrameFilters(HlsPipeline& pipeline) {
  return {FilterOf(pipeline, 1, g_videoSkip), FilterOf(pipeline, 0, g_audioSkip)};
}

void SkipFirstVideoFrame() {
  g_audioSkip = 0;
  g_videoSkip = -1;
}

void SkipNoFrame() {
  g_audioSkip = 0;
  g_videoSkip = 0;
}
