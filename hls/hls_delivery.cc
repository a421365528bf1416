#include "hls/hls_delivery.h"

#include <atomic>
#include <cstdint>

namespace stream {
namespace {

// `is_video` is the isVideo value of the frames.
FrameFilter FilterOf(HlsTaskState& hls, std::uint32_t is_video, std::atomic<std::int32_t>& skip) {
  return [&hls, is_video, &skip](const FrameRecord& frame) {
    if (frame.isVideo == is_video && hls.listedDuration.load() > 0) {
      hls.listedDuration = 0;
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

FrameFilters HlsFrameFilters(HlsTaskState& hls) {
  FrameFilters filters;
  filters.video = FilterOf(hls, 1, hls.stream.g_videoSkip);
  filters.audio = FilterOf(hls, 0, hls.stream.g_audioSkip);
  return filters;
}

}  // namespace stream
