#include "common/thread_pool.h"

#include <utility>

#include "platform/mutex.h"

namespace stream {

CThreadPool::CThreadPool(std::uint32_t thread_count) : threadCount(thread_count) { Start(); }

CThreadPool::~CThreadPool() { Stop(); }

void CThreadPool::Start() {
  try {
    StartWorkers();
  } catch (...) {  // the system provides no more threads: stop those that run
    Stop();
    throw;
  }
}

void CThreadPool::StartWorkers() {
  const MutexLock lock(mutex);
  if (running) return;
  running = true;
  threads.reserve(threadCount);
  for (std::uint32_t i = 0; i < threadCount; ++i) threads.emplace_back([this] { Work(); });
}

void CThreadPool::AddTask(Task task) {
  {
    const MutexLock lock(mutex);
    tasks.push_back(std::move(task));
  }
  wakeup.notify_one();
}

void CThreadPool::Stop() {
  std::vector<std::thread> stopping;
  {
    const MutexLock lock(mutex);
    running = false;
    stopping.swap(threads);
  }
  wakeup.notify_all();
  for (std::thread& thread : stopping) thread.join();
}

void CThreadPool::Work() {
  while (const Task task = NextTask()) task();
}

// Returns the next task, or an empty one if the pool stops.
CThreadPool::Task CThreadPool::NextTask() {
  const MutexLock lock(mutex);
  WaitOn(wakeup, mutex, [this]() REQUIRES(mutex) { return !tasks.empty() || !running; });
  if (!running) return {};
  Task task = std::move(tasks.front());
  tasks.pop_front();
  return task;
}

}  // namespace stream
