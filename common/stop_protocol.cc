#include "common/stop_protocol.h"

#include "common/console.h"
#include "common/frame_queue.h"

bool StopPipeline(const StoppingPipeline& pipeline) {
  if (!pipeline.running.load()) return false;
  ConsoleLine(pipeline.name + " EndDownload...");
  pipeline.running.store(false);
  pipeline.gate.Close();
  pipeline.wake();
  pipeline.pool.Stop();
  ClearVideoQueue();
  ConsoleLine(pipeline.name + " video clear.");
  ClearAudioQueue();
  ConsoleLine(pipeline.name + " audio clear.");
  return true;
}
