#include <gtest/gtest.h>
#include <windows.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <thread>
#include <vector>

#include "platform/sleep.h"

namespace stream {
namespace {

// A thread that reuses and fills all small blocks that are released to the heap.
class HeapUser {
 public:
  HeapUser() : thread_([this] { Run(); }) {}
  ~HeapUser() {
    is_ended_ = true;
    thread_.join();
  }
  HeapUser(const HeapUser&) = delete;
  HeapUser& operator=(const HeapUser&) = delete;

 private:
  void Run() const {
    while (!is_ended_) {
      std::vector<std::unique_ptr<char[]>> blocks;
      for (std::size_t i = 0; i < 2000; ++i) {
        blocks.push_back(std::make_unique<char[]>(16 + i % 200));
      }
    }
  }

  std::atomic<bool> is_ended_{false};
  std::thread thread_;
};

// wine does not count the handles of a process. Handles are multiples of four, and low ones are
// assigned first.
int OpenHandles() {
  constexpr std::uintptr_t kStep = 4;
  constexpr std::uintptr_t kHighest = 8192;
  int open = 0;
  for (std::uintptr_t value = kStep; value <= kHighest; value += kStep) {
    DWORD flags = 0;
    if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags) != 0) ++open;
  }
  return open;
}

void SleepInAThread() {
  std::thread([] { platform::SleepMilliseconds(1); }).join();
}

bool SleepOpensAHandle() {
  int opened = 0;
  std::thread([&opened] {
    const int before = OpenHandles();
    platform::SleepMilliseconds(1);
    opened = OpenHandles() - before;
  }).join();
  return opened > 0;
}

TEST(ThreadTimerTest, ThreadsThatEndLeaveNoHandle) {
  constexpr int kThreads = 200;
  constexpr int kOfTheSystem = 20;  // it may open a few of its own
  const HeapUser user;
  if (!SleepOpensAHandle()) GTEST_SKIP() << "this system has no timers of that kind";
  const int before = OpenHandles();
  ASSERT_GT(before, 0);
  for (int i = 0; i < kThreads; ++i) SleepInAThread();
  EXPECT_LT(OpenHandles(), before + kOfTheSystem);
}

}  // namespace
}  // namespace stream
