// The number of threads of a pool, counted by the system.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <iterator>
#include <set>
#include <string>
#include <thread>

#include "common/thread_pool.h"

namespace stream {
namespace {

using Threads = std::set<std::string>;

Threads ThreadsOfThisProcess() {
  Threads threads;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task")) {
    threads.insert(entry.path().filename().string());
  }
  return threads;
}

// The number of threads that exist now and are not in `then`. A thread that has ended may be listed
// for a while.
std::size_t CountNew(const Threads& then) {
  const Threads now = ThreadsOfThisProcess();
  Threads added;
  std::set_difference(now.begin(), now.end(), then.begin(), then.end(),
                      std::inserter(added, added.end()));
  return added.size();
}

// ThreadSanitizer starts a thread of its own with the first thread of a process. It must exist
// before a test counts.
class ThreadPoolWorkersTest : public testing::Test {
 protected:
  void SetUp() override {
    std::thread([] {}).join();
  }
};

TEST_F(ThreadPoolWorkersTest, NewPoolHasTheRequestedNumberOfThreads) {
  const Threads before = ThreadsOfThisProcess();
  const CThreadPool pool(8);
  EXPECT_EQ(CountNew(before), 8U);
}

TEST_F(ThreadPoolWorkersTest, StartOnARunningPoolStartsNoExtraThreads) {
  CThreadPool pool(2);
  const Threads before = ThreadsOfThisProcess();
  pool.Start();
  EXPECT_EQ(CountNew(before), 0U);
}

TEST_F(ThreadPoolWorkersTest, StartAfterAStopStartsAllThreadsAgain) {
  CThreadPool pool(3);
  pool.Stop();
  const Threads before = ThreadsOfThisProcess();
  pool.Start();
  EXPECT_EQ(CountNew(before), 3U);
}

}  // namespace
}  // namespace stream
