#include "platform/mutex.h"

#include <gtest/gtest.h>

#include <condition_variable>
#include <future>
#include <stdexcept>

namespace stream {
namespace {

// Asks another thread, since the owner of a mutex must not try to lock it.
bool IsHeld(Mutex& mutex) {
  const auto is_free = [&mutex] {
    if (!mutex.try_lock()) return false;
    mutex.unlock();
    return true;
  };
  return !std::async(std::launch::async, is_free).get();
}

TEST(MutexTest, LockIsHeldToTheEndOfItsScope) {
  Mutex mutex;
  {
    const MutexLock lock(mutex);
    EXPECT_TRUE(IsHeld(mutex));
  }
  EXPECT_FALSE(IsHeld(mutex));
}

TEST(MutexTest, UnlockReleasesTheMutexToTheEndOfItsScope) {
  Mutex mutex;
  const MutexLock lock(mutex);
  {
    const MutexUnlock unlocked(mutex);
    EXPECT_FALSE(IsHeld(mutex));
  }
  EXPECT_TRUE(IsHeld(mutex));
}

TEST(MutexTest, MutexIsStillHeldAfterAWait) {
  Mutex mutex;
  std::condition_variable condition;
  const MutexLock lock(mutex);
  WaitOn(condition, mutex, [] { return true; });
  EXPECT_TRUE(IsHeld(mutex));
}

TEST(MutexTest, MutexIsStillHeldAfterAWaitThatThrows) {
  Mutex mutex;
  std::condition_variable condition;
  const MutexLock lock(mutex);
  const auto throwing = []() -> bool { throw std::runtime_error("no wait"); };
  EXPECT_THROW(WaitOn(condition, mutex, throwing), std::runtime_error);
  EXPECT_TRUE(IsHeld(mutex));
}

}  // namespace
}  // namespace stream
