#include "ts/ts_parse.h"

#include <algorithm>
#include <mutex>

#include "common/clock.h"
#include "common/queue_limit.h"
#include "ts/ts_demux.h"
#include "ts/ts_packet.h"
#include "ts/ts_state.h"

namespace {

constexpr auto kPacketSize = static_cast<std::uint32_t>(kTsPacketSize);

// Moves the staged whole packets into the scratch buffer, at most as many as a batch can count.
// Returns false if there is none or memory runs out. Copying them keeps the lock short.
bool TakeBatch(CopyBuffer& batch) {
  constexpr std::uint32_t kMaxPackets = 0x7FFFFFFF / kPacketSize;
  batch.Reset();
  const std::lock_guard lock(g_tsStreamLock);
  const std::uint32_t packets = std::min(g_tsStreamBuffer->Size() / kPacketSize, kMaxPackets);
  if (packets == 0) return false;
  if (!batch.Append(g_tsStreamBuffer->ContinuePtr(), packets * kPacketSize)) return false;
  g_tsStreamBuffer->MoveStart(packets * kPacketSize);
  return true;
}

// Takes a batch and feeds it, one packet per call. The lock is held for both, so that batches are
// fed in the order in which they were received, even if two parse tasks run. A stop ends the batch:
// the rest would only be dropped, and an invalid stream prints a line for each packet.
bool FeedBatch() {
  constexpr std::int32_t kLargestKeptBatch = 1 << 20;
  const TsDemuxLock lock;
  CopyBuffer& batch = (*g_tsScratch)[kParseScratch];
  if (!TakeBatch(batch)) return false;
  const std::uint8_t* const end = batch.Data() + batch.Length();
  const std::uint8_t* packet = batch.Data();
  for (; packet < end && g_tsRunning.load(); packet += kPacketSize) {
    ts_demux_feed(packet, static_cast<std::int32_t>(kPacketSize));
  }
  if (batch.Capacity() > kLargestKeptBatch) batch.Release();
  return true;
}

void ReportDuration(TsDurationReport& report, const PlayerPort& player) {
  if (!player) return;
  float seconds = 0;
  {
    const std::lock_guard lock(g_frameQueueMutex);
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
  TsDurationReport report;
  while (g_tsRunning.load()) {
    WaitForQueueSpace(g_tsRunning, kDefaultQueueLimit);
    if (FeedBatch()) {
      ReportDuration(report, player);
      SleepFor(kBatchPause);
    } else {
      SleepFor(kEmptyPause);
    }
  }
}
