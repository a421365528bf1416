// TaskGate: keeps a task that no worker had taken yet when its pipeline was stopped from running
// after the next start. The pool keeps such tasks (thread_pool.h); without the gate a stop right
// after a start would leave a second set of tasks behind, and the next start would play every frame
// twice.
#ifndef COMMON_TASK_GATE_H_
#define COMMON_TASK_GATE_H_

#include <atomic>
#include <cstdint>
#include <utility>

#include "common/caught.h"
#include "common/thread_pool.h"

// Safe from any thread. It must outlive the pool that runs the tasks.
class TaskGate {
 public:
  // A task that runs `task`, or does nothing once Close was called. What `task` throws, when memory
  // runs out, ends it alone, and is logged: the pool's tasks must not throw, and the host goes on.
  CThreadPool::Task Admit(CThreadPool::Task task) {
    return [this, task = std::move(task), closings = closings_.load()] {
      if (closings_.load() == closings) RunGuarded(task);
    };
  }

  // Turns away every task admitted so far that has not begun.
  void Close() { ++closings_; }

 private:
  static void RunGuarded(const CThreadPool::Task& task) noexcept {
    try {
      task();
    } catch (...) {
      LogCaught("a task ended: ", "");
    }
  }

  std::atomic<std::uint64_t> closings_{0};
};

#endif  // COMMON_TASK_GATE_H_
