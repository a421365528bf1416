#include "hls/hls_delivery.h"

#include <atomic>
#include <cstdint>

#include "common/frame_delivery.h"

namespace {

struct HlsDelivery {
  void (*deliver)(const DeliveryLoop& loop);
  std::uint32_t is_video;  // the isVideo value of this queue's frames
  std::atomic<std::int32_t>& skip;
  const char* stop_line;
};

void Deliver(HlsPipeline& pipeline, const HlsDelivery& delivery) {
  const auto wanted = [&pipeline, &delivery](const FrameRecord& frame) {
    if (frame.isVideo == delivery.is_video && pipeline.listedDuration.load() > 0) {
      pipeline.listedDuration = 0;
    }
    return !CountSkippedFrame(delivery.skip);
  };
  delivery.deliver({pipeline.running, pipeline.player, wanted, delivery.stop_line});
  pipeline.player.Message(delivery.stop_line);
}

}  // namespace

bool CountSkippedFrame(std::atomic<std::int32_t>& skip) {
  std::int32_t count = skip.load();
  while (count < 0) {
    if (skip.compare_exchange_weak(count, count + 1)) return true;
  }
  return false;
}

void DeliverHlsVideo(HlsPipeline& pipeline) {
  Deliver(pipeline,
          {DeliverVideoFrames, 1, pipeline.stream.g_videoSkip, "m3u8 video thread stop."});
}

void DeliverHlsAudio(HlsPipeline& pipeline) {
  Deliver(pipeline,
          {DeliverAudioFrames, 0, pipeline.stream.g_audioSkip, "m3u8 audio thread stop."});
}
