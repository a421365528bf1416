#include "common/stop_protocol.h"

#include "common/console.h"
#include "common/frame_queue.h"

namespace {

void Drain(FrameNodePtr (*pop)()) {
  while (pop() != nullptr) {
  }
}

}  // namespace

bool StopPipeline(const StoppingPipeline& pipeline) {
  if (!pipeline.running.load()) return false;
  ConsoleLine(pipeline.name + " EndDownload...");
  pipeline.running.store(false);
  pipeline.gate.Close();
  pipeline.wake();
  pipeline.pool.Stop();
  Drain(PopVideoFrame);
  ConsoleLine(pipeline.name + " video clear.");
  Drain(PopAudioFrame);
  ConsoleLine(pipeline.name + " audio clear.");
  return true;
}
