// CThreadPool: a fixed number of worker threads that run tasks from one queue, in the order in
// which the tasks were added. Every pipeline owns one and runs its long-lived loops on it.
//
// Threads: tasks may be added from any thread. Start, Stop and the destructor are called from one
// thread at a time, and not from a task of the same pool, since Stop waits for it. A task must
// check its pipeline's run flag and return soon after it was cleared. It must not throw.
#ifndef COMMON_THREAD_POOL_H_
#define COMMON_THREAD_POOL_H_

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <thread>
#include <vector>

#include "platform/mutex.h"

namespace stream {

class CThreadPool {
 public:
  using Task = std::function<void()>;

  // The number of workers of every pipeline. A start adds four or five tasks.
  static constexpr std::uint32_t kPipelineWorkers = 8;

  // Starts `thread_count` workers at once.
  explicit CThreadPool(std::uint32_t thread_count);
  ~CThreadPool();
  CThreadPool(const CThreadPool&) = delete;
  CThreadPool& operator=(const CThreadPool&) = delete;

  // Starts the workers again after Stop; does nothing while they run. If the system provides no
  // thread, throws std::system_error and leaves the pool stopped.
  void Start();

  // Appends a task. On a stopped pool it stays queued and runs after the next Start.
  void AddTask(Task task);

  // Waits for the running tasks and ends the workers. Tasks that have not started stay queued.
  void Stop();

 private:
  void StartWorkers();
  void Work();
  Task NextTask();

  const std::uint32_t threadCount;
  std::vector<std::thread> threads GUARDED_BY(mutex);
  std::deque<Task> tasks GUARDED_BY(mutex);
  Mutex mutex;
  std::condition_variable wakeup;
  bool running GUARDED_BY(mutex) = false;
};

}  // namespace stream

#endif  // COMMON_THREAD_POOL_H_
