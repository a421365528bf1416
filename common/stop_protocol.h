// The steps by which every pipeline stops, in one place.
#ifndef COMMON_STOP_PROTOCOL_H_
#define COMMON_STOP_PROTOCOL_H_

#include <atomic>
#include <functional>
#include <string>

#include "common/task_gate.h"
#include "common/thread_pool.h"

struct StoppingPipeline {
  std::string name;            // as the console lines spell it: "ts", "flv", ...
  std::atomic<bool>& running;  // the run flag that all tasks look at
  CThreadPool& pool;
  TaskGate& gate;              // through which the pool's tasks were admitted
  std::function<void()> wake;  // what else tells the tasks: run right after the flag was cleared
};

// Ends a pipeline: clears its flag, wakes and joins its tasks, and releases what the two frame
// queues still hold. Blocks until no task runs. Not to be called from one of the pipeline's own
// tasks.
//
// Returns false when the flag is clear already, without a line, and leaves the queues alone. The
// tasks are joined all the same: where pipelines share a flag another one may have cleared it, and
// the host may destroy the player once this has returned.
bool StopPipeline(const StoppingPipeline& pipeline);

#endif  // COMMON_STOP_PROTOCOL_H_
