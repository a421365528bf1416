#include "ts/ts_download.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <future>
#include <mutex>
#include <vector>

#include "tests/support/polling.h"
#include "tests/support/simulated_clock.h"
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

  static constexpr Clock::Duration kPace{1};

  SimulatedClock clock_;
};

TEST_F(TsStreamRoomTest, LessThanTheMostDoesNotWait) {
  Stage(99);
  AwaitStreamRoom(100);
}

TEST_F(TsStreamRoomTest, TheMostWaitsUntilSomeAreRead) {
  Stage(100);
  const std::future<void> waiting = Await(100);
  EXPECT_TRUE(StillPolls(clock_, kPace));
  {
    const std::lock_guard lock(g_tsStreamLock);
    g_tsStreamBuffer->MoveStart(1);
  }
  clock_.Advance(kPace);
  waiting.wait();
}

TEST_F(TsStreamRoomTest, StopEndsTheWait) {
  Stage(100);
  const std::future<void> waiting = Await(100);
  EXPECT_TRUE(StillPolls(clock_, kPace));
  g_tsRunning = false;
  clock_.Advance(kPace);
  waiting.wait();
}

}  // namespace
