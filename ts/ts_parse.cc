#include "ts/ts_parse.h"

#include "common/clock.h"
#include "common/queue_limit.h"
#include "ts/ts_batch_feeder.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

void ReportDuration(TsDurationReport& report, const PlayerPort& player) {
  if (!player) return;
  float seconds = 0;
  {
    const MutexLock lock(g_frameQueueMutex);
    seconds = report.Update(g_videoQueue);
  }
  if (seconds >= 0) player.Duration(seconds);
}

}  // namespace

float TsDurationReport::Update(const FrameQueue* queue) {
  constexpr float kNothingNew = -1;
  constexpr double kTicksPerSecond = 90000.0;
  if (queue == nullptr || queue->head == nullptr) return kNothingNew;
  if (first_pts_ == 0) {
    first_pts_ = queue->head->pts;
    return kNothingNew;
  }
  const std::uint64_t newest = queue->tail->pts;
  if (newest <= newest_pts_ || newest < first_pts_) return kNothingNew;
  newest_pts_ = newest;
  return static_cast<float>(static_cast<double>(newest - first_pts_) / kTicksPerSecond);
}

void ParseTs(const PlayerPort& player) {
  constexpr std::chrono::milliseconds kEmptyPause{10};
  constexpr std::chrono::milliseconds kBatchPause{1};
  TsBatchFeeder feeder;
  TsDurationReport report;
  while (g_tsRunning.load()) {
    WaitForQueueSpace(g_tsRunning, kDefaultQueueLimit);
    if (feeder.FeedBatch()) {
      ReportDuration(report, player);
      SleepFor(kBatchPause);
    } else {
      SleepFor(kEmptyPause);
    }
  }
}

}  // namespace stream
