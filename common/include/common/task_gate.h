// TaskGate: drops tasks that no worker had started when their pipeline was stopped. The pool keeps
// such tasks (thread_pool.h). Without the gate, a stop right after a start would leave a second set
// of tasks behind, and the next start would play every frame twice.
#ifndef COMMON_TASK_GATE_H_
#define COMMON_TASK_GATE_H_

#include <utility>

#include "common/caught.h"
#include "common/run_id.h"
#include "common/thread_pool.h"

namespace stream {

// Safe from any thread. Must outlive the admitted tasks.
class TaskGate {
 public:
  // Returns a task that runs `task`, or does nothing if Close was called meanwhile. An exception
  // from `task`, for example when memory runs out, is logged and ends only this task: the pool's
  // tasks must not throw, and the host continues to run.
  CThreadPool::Task Admit(CThreadPool::Task task) {
    return [this, task = std::move(task), run = runs_.Current()] {
      if (runs_.IsCurrent(run)) RunGuarded(task);
    };
  }

  // Drops all admitted tasks that have not started.
  void Close() { runs_.Next(); }

 private:
  static void RunGuarded(const CThreadPool::Task& task) noexcept {
    try {
      task();
    } catch (...) {
      LogCaught("a task ended: ", "");
    }
  }

  RunCounter runs_;  // one run lasts from one Close to the next
};

}  // namespace stream

#endif  // COMMON_TASK_GATE_H_
