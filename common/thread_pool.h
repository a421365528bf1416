// CThreadPool: a fixed number of worker threads that take tasks from one queue in arrival order.
// Every pipeline owns one and runs its long-lived loops on it.
// Threads: tasks may be added from any thread. Start, Stop and the destructor are called from one
// thread at a time, and not from a task of the same pool, since Stop waits for it. A task must look
// at its pipeline's run flag and come back soon after it was cleared; it must not throw.
#ifndef COMMON_THREAD_POOL_H_
#define COMMON_THREAD_POOL_H_

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

class CThreadPool {
 public:
  using Task = std::function<void()>;

  // Every pipeline uses this many workers, for four or five tasks a start.
  static constexpr std::uint32_t kPipelineWorkers = 8;

  // Starts `thread_count` workers at once.
  explicit CThreadPool(std::uint32_t thread_count);
  ~CThreadPool();
  CThreadPool(const CThreadPool&) = delete;
  CThreadPool& operator=(const CThreadPool&) = delete;

  // Starts the workers again after Stop; does nothing while they run. Throws std::system_error,
  // with the pool stopped, when the system gives no thread.
  void Start();

  // Appends a task. On a stopped pool it stays queued and runs after the next Start.
  void AddTask(Task task);

  // Waits for the tasks that are running and ends the workers. Tasks not yet taken stay queued.
  void Stop();

 private:
  void Work();
  Task TakeTask();

  const std::uint32_t threadCount;
  std::vector<std::thread> threads;  // guarded by mutex
  std::deque<Task> tasks;            // guarded by mutex
  std::mutex mutex;
  std::condition_variable wakeup;
  bool running = false;  // guarded by mutex
};

#endif  // COMMON_THREAD_POOL_H_
