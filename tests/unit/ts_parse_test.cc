#include "ts/ts_parse.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <mutex>
#include <thread>

#include "common/frame_queue.h"
#include "tests/support/claimed_backlog.h"
#include "tests/support/polling.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/ts_packets.h"
#include "tests/support/ts_staging.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

// Runs a parse task on a thread of its own, in simulated time, until the test ends.
class TsParseTest : public testing::Test {
 protected:
  TsParseTest() {
    ResetFrameQueues();
    g_tsRunning = true;
  }
  ~TsParseTest() override { Stop(); }

  static std::uint32_t Unread() {
    const std::lock_guard lock(g_tsStreamLock);
    return g_tsStreamBuffer->Size();
  }

  void Start() {
    thread_ = std::thread([] { ParseTs(PlayerPort()); });
  }
  void Stop() {
    g_tsRunning = false;
    clock_.Release();
    if (thread_.joinable()) thread_.join();
  }

  static constexpr Clock::Duration kSpacePace{1};
  static constexpr Clock::Duration kBatchPause{1};
  static constexpr Clock::Duration kEmptyPause{10};

  SimulatedClock clock_;
  std::thread thread_;
};

TEST_F(TsParseTest, ChecksAgainTenMillisecondsAfterAnEmptyBuffer) {
  Start();
  EXPECT_TRUE(StillPolls(clock_, kEmptyPause));
  StageTsBytes(ts_test::MakeStream(4));
  clock_.Advance(kEmptyPause - Clock::Duration(1));
  EXPECT_EQ(clock_.Waiting(), 1U);
  EXPECT_GT(Unread(), 0U);
  clock_.Advance(Clock::Duration(1));
  EXPECT_TRUE(WaitUntil([] { return PushedVideoFrames() == 3; }));
}

TEST_F(TsParseTest, PausesOneMillisecondAfterABatch) {
  StageTsBytes(ts_test::MakeStream(4));
  Start();
  ASSERT_TRUE(clock_.WaitForWaiters(1));
  EXPECT_EQ(Unread(), 0U);
  EXPECT_EQ(clock_.Sleeps(kBatchPause), 1U);
  EXPECT_EQ(clock_.Sleeps(kEmptyPause), 0U);
  clock_.Advance(kBatchPause);
  ASSERT_TRUE(WaitUntil([this] { return clock_.Sleeps(kEmptyPause) == 1; }));
  EXPECT_EQ(clock_.Sleeps(kBatchPause), 1U) << "there was a second batch";
}

TEST_F(TsParseTest, StreamWaitsForQueueSpace) {
  ClaimTooManyBytes();
  const ts_test::Bytes stream = ts_test::MakeStream(4);
  StageTsBytes(stream);
  Start();
  EXPECT_TRUE(StillPolls(clock_, kSpacePace));
  EXPECT_EQ(Unread(), stream.size());
  ClaimNothing();
  clock_.Advance(kSpacePace);
  EXPECT_TRUE(WaitUntil([] { return Unread() == 0; }));
}

TEST_F(TsParseTest, StopEndsTheWaitForQueueSpace) {
  ClaimTooManyBytes();
  StageTsBytes(ts_test::MakeStream(4));
  Start();
  EXPECT_TRUE(StillPolls(clock_, kSpacePace));
  Stop();
  EXPECT_EQ(PushedVideoFrames(), 0U);
  ClaimNothing();
}

}  // namespace
}  // namespace stream
