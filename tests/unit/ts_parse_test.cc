#include "ts/ts_parse.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <mutex>
#include <thread>

#include "common/frame_queue.h"
#include "tests/support/claimed_backlog.h"
#include "tests/support/ts_packets.h"
#include "tests/support/wait_until.h"
#include "ts/ts_demux.h"
#include "ts/ts_state.h"

namespace {

// A parse task with a whole stream before it, while more than enough frames wait for delivery.
class TsBacklogTest : public testing::Test {
 protected:
  TsBacklogTest() {
    ResetFrameQueues();
    ClaimTooManyBytes();
    const ts_test::Bytes stream = ts_test::MakeStream(4);
    {
      const std::lock_guard lock(g_tsStreamLock);
      g_tsStreamBuffer->Initialize();
      g_tsStreamBuffer->Reset();
      g_tsStreamBuffer->Append(stream.data(), static_cast<std::uint32_t>(stream.size()));
    }
    g_tsRunning = true;
    thread_ = std::thread([] { ParseTs(PlayerPort()); });
  }
  ~TsBacklogTest() override {
    Stop();
    ReleaseFrameQueues();
  }

  static std::uint32_t Unread() {
    const std::lock_guard lock(g_tsStreamLock);
    return g_tsStreamBuffer->Size();
  }

  void Stop() {
    g_tsRunning = false;
    if (thread_.joinable()) thread_.join();
  }

  static void PauseForAWhile() { std::this_thread::sleep_for(std::chrono::milliseconds(100)); }

  std::thread thread_;
};

TEST_F(TsBacklogTest, StreamWaitsUntilThereIsRoomForItsFrames) {
  PauseForAWhile();
  EXPECT_GT(Unread(), 0U);
  ClaimNothing();
  EXPECT_TRUE(WaitUntil([] { return Unread() == 0; }));
}

TEST_F(TsBacklogTest, StopEndsTheWaitForRoom) {
  PauseForAWhile();
  Stop();
  EXPECT_EQ(g_videoQueue->pushed, 0U);
}

TEST(TsParseTest, CopyOfALargeBatchIsReleasedAfterItAndThatOfASmallOneIsKept) {
  const auto parse = [](const ts_test::Bytes& stream) {
    ts_demux_forget();
    ResetFrameQueues();
    (*g_tsScratch)[kParseScratch].Release();
    {
      const std::lock_guard lock(g_tsStreamLock);
      g_tsStreamBuffer->Initialize();
      g_tsStreamBuffer->Reset();
      g_tsStreamBuffer->Append(stream.data(), static_cast<std::uint32_t>(stream.size()));
    }
    g_tsRunning = true;
    std::thread thread([] { ParseTs(PlayerPort()); });
    EXPECT_TRUE(WaitUntil([] {
      const std::lock_guard lock(g_frameQueueMutex);
      return g_audioQueue->pushed == 29;
    }));
    g_tsRunning = false;
    thread.join();
    return (*g_tsScratch)[kParseScratch].Capacity();
  };
  const ts_test::Bytes small = ts_test::MakeStream(30);
  EXPECT_EQ(parse(small), static_cast<std::int32_t>(small.size()));
  EXPECT_EQ(parse(ts_test::MakeStream(30, 90'000, 100'000)), 0);
  ReleaseFrameQueues();
}

}  // namespace
