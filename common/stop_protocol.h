// The stop sequence that all pipelines share.
#ifndef COMMON_STOP_PROTOCOL_H_
#define COMMON_STOP_PROTOCOL_H_

#include <atomic>
#include <functional>
#include <string>

#include "common/task_gate.h"
#include "common/thread_pool.h"

struct StoppingPipeline {
  std::string name;            // as in the console lines: "ts", "flv", ...
  std::atomic<bool>& running;  // the run flag that all tasks check
  CThreadPool& pool;
  TaskGate& gate;  // the gate that admitted the pool's tasks
  // Notifies the tasks in other ways. Called after the flag was cleared.
  std::function<void()> wake;
};

// Stops a pipeline: clears its run flag, wakes and joins its tasks, and releases the frames left in
// the two queues. Blocks until no task runs. Must not be called from one of the pipeline's own
// tasks.
//
// If the flag is already clear, it returns false, logs nothing and does not touch the queues. It
// still joins the tasks: another pipeline that shares the flag may have cleared it, and the host
// may destroy the player after the return.
bool StopPipeline(const StoppingPipeline& pipeline);

#endif  // COMMON_STOP_PROTOCOL_H_
