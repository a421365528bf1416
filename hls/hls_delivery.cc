#include "hls/hls_delivery.h"

#include <atomic>
#include <cstdint>

namespace stream {
namespace {

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
  FrameFilters filters;
  filters.video = FilterOf(pipeline, 1, pipeline.stream.g_videoSkip);
  filters.audio = FilterOf(pipeline, 0, pipeline.stream.g_audioSkip);
  return filters;
}

}  // namespace stream
