#include "common/frame_delivery.h"

#include "common/clock.h"
#include "common/console.h"

namespace stream {
namespace {

using PopFunction = FrameNodePtr (*)();
using HandOver = void (PlayerPort::*)(const FrameRecord&) const;

void Deliver(const DeliveryLoop& loop, PopFunction pop, HandOver hand_over) {
  while (loop.running.load()) {
    if (const FrameNodePtr node = pop()) {
      if (!loop.wanted || loop.wanted(*node)) (loop.player.*hand_over)(*node);
    }
    SleepFor(std::chrono::milliseconds(1));  // in each turn, with or without a frame
  }
  ConsoleLine(loop.stop_line);
}

}  // namespace

void DeliverVideoFrames(const DeliveryLoop& loop) {
  Deliver(loop, PopVideoFrame, &PlayerPort::VideoFrame);
}

void DeliverAudioFrames(const DeliveryLoop& loop) {
  Deliver(loop, PopAudioFrame, &PlayerPort::AudioFrame);
}

}  // namespace stream
