#include "ts/ts_download.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <future>
#include <mutex>
#include <vector>

#include "tests/support/wait_until.h"
#include "ts/ts_state.h"

namespace {

class TsStreamRoomTest : public testing::Test {
 protected:
  TsStreamRoomTest() {
    const std::lock_guard lock(g_tsStreamLock);
    g_tsStreamBuffer->Initialize();
    g_tsStreamBuffer->Reset();
    g_tsRunning = true;
  }
  ~TsStreamRoomTest() override { g_tsRunning = false; }

  static void Stage(std::uint32_t size) {
    const std::vector<char> bytes(size);
    const std::lock_guard lock(g_tsStreamLock);
    ASSERT_EQ(g_tsStreamBuffer->Append(bytes.data(), size), kBufferOk);
  }

  static std::future<void> Await(std::uint32_t most_unread) {
    return std::async(std::launch::async, AwaitStreamRoom, most_unread);
  }
};

TEST_F(TsStreamRoomTest, LessThanTheMostDoesNotWait) {
  Stage(99);
  AwaitStreamRoom(100);
}

TEST_F(TsStreamRoomTest, TheMostWaitsUntilSomeAreRead) {
  Stage(100);
  const std::future<void> waiting = Await(100);
  EXPECT_TRUE(StillWaits(waiting));
  {
    const std::lock_guard lock(g_tsStreamLock);
    g_tsStreamBuffer->MoveStart(1);
  }
  waiting.wait();
}

TEST_F(TsStreamRoomTest, StopEndsTheWait) {
  Stage(100);
  const std::future<void> waiting = Await(100);
  EXPECT_TRUE(StillWaits(waiting));
  g_tsRunning = false;
  waiting.wait();
}

}  // namespace
