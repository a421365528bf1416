#include "ts/ts_batch_feeder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <mutex>
#include <utility>

#include "common/frame_queue.h"
#include "tests/support/ts_packets.h"
#include "tests/support/ts_staging.h"
#include "ts/ts_demux.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

using ts_test::Bytes;
using ts_test::MakeStream;

class TsBatchFeederTest : public testing::Test {
 protected:
  TsBatchFeederTest() {
    ResetFrameQueues();
    const TsDemuxLock feeding;
    ProcessTsDemuxer().Reset();
    const std::lock_guard lock(g_tsStreamLock);
    std::destroy_at(&*g_tsStreamBuffer);  // releases the array that an earlier test has grown
    std::construct_at(&*g_tsStreamBuffer);
    g_tsStreamBuffer->Initialize();
    g_tsRunning = true;
  }
  ~TsBatchFeederTest() override { g_tsRunning = false; }

  static std::uint32_t StagingCapacity() {
    const std::lock_guard lock(g_tsStreamLock);
    return g_tsStreamBuffer->Capacity();
  }

  // Returns the capacity of the staging buffer before the batch is fed.
  std::uint32_t FeedOneBatch(const Bytes& stream) {
    StageTsBytes(stream);
    const std::uint32_t capacity = StagingCapacity();
    EXPECT_TRUE(feeder_.FeedBatch());
    EXPECT_EQ(StagedTsBytes(), Bytes());
    return capacity;
  }

  TsBatchFeeder feeder_;
};

TEST_F(TsBatchFeederTest, EmptyBufferIsNoBatch) { EXPECT_FALSE(feeder_.FeedBatch()); }

TEST_F(TsBatchFeederTest, AllPacketsAreFedInOrder) {
  for (int batch = 0; batch < 3; ++batch) {
    FeedOneBatch(MakeStream(4, 90'000 + static_cast<std::uint64_t>(batch) * 4 * 3600));
    EXPECT_FALSE(feeder_.FeedBatch());
  }
  std::uint64_t pts = 90'000;
  while (const FrameNodePtr frame = PopVideoFrame()) {
    EXPECT_EQ(frame->pts, pts);
    pts += 3600;
  }
  EXPECT_EQ(pts, 90'000U + 11 * 3600) << "the last frame stays in the demultiplexer";
}

TEST_F(TsBatchFeederTest, IncompletePacketStaysUntilItsRestIsReceived) {
  const Bytes stream = MakeStream(4);
  const Bytes::difference_type end = 3 * kTsPacketSize + 100;
  StageTsBytes({stream.begin(), stream.begin() + end});
  EXPECT_TRUE(feeder_.FeedBatch());
  EXPECT_EQ(StagedTsBytes(), Bytes(stream.begin() + 3 * kTsPacketSize, stream.begin() + end));
  EXPECT_FALSE(feeder_.FeedBatch());
  StageTsBytes({stream.begin() + end, stream.end()});
  EXPECT_TRUE(feeder_.FeedBatch());
  EXPECT_EQ(PushedVideoFrames(), 3U);
}

TEST_F(TsBatchFeederTest, StopDropsTheRestOfTheBatch) {
  StageTsBytes(MakeStream(4));
  g_tsRunning = false;
  EXPECT_TRUE(feeder_.FeedBatch());
  EXPECT_EQ(StagedTsBytes(), Bytes());
  g_tsRunning = true;
  EXPECT_FALSE(feeder_.FeedBatch());
  FeedOneBatch(MakeStream(4));
  EXPECT_EQ(PushedVideoFrames(), 3U) << "the dropped packets were fed too";
}

TEST_F(TsBatchFeederTest, ArraysOfSmallBatchesAreReused) {
  const Bytes larger = MakeStream(300);
  const Bytes smaller = MakeStream(30);
  const std::uint32_t capacity = FeedOneBatch(larger);
  ASSERT_GT(capacity, larger.size());
  EXPECT_LT(FeedOneBatch(smaller), capacity);
  EXPECT_EQ(FeedOneBatch(smaller), capacity) << "the first array is in use again";
}

TEST_F(TsBatchFeederTest, ArrayOfALargeBatchIsReleasedAfterASmallOne) {
  const std::uint32_t large = FeedOneBatch(MakeStream(30, 90'000, 100'000));
  const Bytes small = MakeStream(30);
  constexpr int kBatches = 6;
  std::uint32_t latest = large;
  std::uint32_t before = large;
  for (int i = 0; i < kBatches; ++i) before = std::exchange(latest, FeedOneBatch(small));
  EXPECT_LT(std::max(latest, before), large) << "one of the two arrays is still the large one";
}

TEST_F(TsBatchFeederTest, ArraysOfSuccessiveLargeBatchesAreReused) {
  const Bytes large = MakeStream(30, 90'000, 100'000);
  const std::uint32_t capacity = FeedOneBatch(large);
  FeedOneBatch(large);
  StageTsBytes(MakeStream(1));
  EXPECT_EQ(StagingCapacity(), capacity);
}

}  // namespace
}  // namespace stream
