#include "common/stop_protocol.h"

#include "common/console.h"
#include "common/frame_queue.h"

namespace {

void JoinTasks(const StoppingPipeline& pipeline) {
  pipeline.gate.Close();
  pipeline.wake();
  pipeline.pool.Stop();
}

}  // namespace

bool StopPipeline(const StoppingPipeline& pipeline) {
  if (!pipeline.running.load()) {
    JoinTasks(pipeline);
    return false;
  }
  ConsoleLine(pipeline.name + " EndDownload...");
  pipeline.running.store(false);
  JoinTasks(pipeline);
  ClearVideoQueue();
  ConsoleLine(pipeline.name + " video clear.");
  ClearAudioQueue();
  ConsoleLine(pipeline.name + " audio clear.");
  return true;
}
