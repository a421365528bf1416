#include "hls/hls_stream.h"

#include <gtest/gtest.h>

#include <future>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "hls/hls_task_state.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/test_limit.h"
#include "ts/ts_demux.h"

namespace stream {
namespace {

class HlsStreamTest : public testing::Test {
 protected:
  static std::vector<QueuedSegment> Segments(std::size_t count) {
    return std::vector<QueuedSegment>(count);
  }

  std::size_t Queued() {
    const std::lock_guard lock(stream_.g_segmentQueueMutex);
    return stream_.g_segmentQueue.size();
  }

  HlsStream& stream_ = *g_hlsStream;
};

TEST_F(HlsStreamTest, ClearForgetsTextsLedgerQueueAndBuffers) {
  {
    const std::lock_guard lock(stream_.playlist_mutex);
    stream_.g_playlistText = "top";
    stream_.g_variantText = "variant";
  }
  {
    const std::lock_guard lock(stream_.download_mutex);
    stream_.g_downloadLength = 2;
    stream_.leftover_length = 1;
  }
  {
    const TsDemuxLock lock;
    stream_.g_parseLength = 3;
  }
  stream_.ledger.AddSegmentIfNew("a.ts", kSegmentQueued);
  stream_.Queue(Segments(2), true);
  stream_.Clear();
  EXPECT_EQ(Queued(), 0U);
  EXPECT_EQ(stream_.ledger.CurrentSizes().known, 0U);
  const std::scoped_lock lock(stream_.playlist_mutex, stream_.download_mutex,
                              stream_.g_segmentQueueMutex);
  EXPECT_EQ(stream_.g_playlistText + stream_.g_variantText, "");
  EXPECT_EQ(stream_.g_downloadLength, 0);
  EXPECT_EQ(stream_.leftover_length, 0);
  EXPECT_EQ(stream_.g_parseLength.load(), 0);
  EXPECT_FALSE(stream_.on_demand_queued);
}

TEST_F(HlsStreamTest, ClearWakesATaskThatWaitsForTheParseBuffer) {
  SimulatedClock clock;
  stream_.g_parseLength = 3;
  const auto hand_over = std::async(std::launch::async, [this, &clock] {
    const MutexLock lock(stream_.g_segmentQueueMutex);
    clock.Wait(stream_.g_segmentQueueCond, stream_.g_segmentQueueMutex,
               [this] { return stream_.g_parseLength.load() == 0; });
  });
  EXPECT_TRUE(clock.WaitForWaiters(1));
  stream_.Clear();
  EXPECT_EQ(hand_over.wait_for(kTestLimit), std::future_status::ready);
  stream_.WakeTasks();  // the task must end before the clock that it waits in
}

TEST_F(HlsStreamTest, ClearKeepsTheFrameToSkip) {
  stream_.SkipFirstVideoFrame();
  stream_.Clear();
  EXPECT_EQ(stream_.g_videoSkip.load(), -1);
  EXPECT_EQ(stream_.g_audioSkip.load(), 0);
}

TEST_F(HlsStreamTest, QueuedSegmentsUseUpTheFreeSlots) {
  EXPECT_EQ(stream_.FreeSlots(), kMaxQueuedSegments);
  stream_.Queue(Segments(3), false);
  stream_.Queue(Segments(2), false);
  EXPECT_EQ(stream_.FreeSlots(), kMaxQueuedSegments - 5);
  stream_.Queue(Segments(kMaxQueuedSegments), false);  // on demand, for example
  EXPECT_EQ(stream_.FreeSlots(), 0U);
}

TEST_F(HlsStreamTest, LiveSegmentsDoNotResetTheMarkOfAnOnDemandPlaylist) {
  stream_.Queue({}, true);
  stream_.Queue(Segments(1), false);
  const std::lock_guard lock(stream_.g_segmentQueueMutex);
  EXPECT_TRUE(stream_.on_demand_queued);
}

TEST_F(HlsStreamTest, ActivePipelineRunsAsLongAsItsFlagIsSet) {
  HlsTaskState pipeline;
  pipeline.running = true;
  EXPECT_FALSE(stream_.ActiveRuns());
  stream_.SetActive(&pipeline);
  EXPECT_TRUE(stream_.ActiveRuns());
  pipeline.running = false;
  EXPECT_FALSE(stream_.ActiveRuns());
  stream_.ForgetActive(&pipeline);
}

}  // namespace
}  // namespace stream
