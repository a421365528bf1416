#include "ts/ts_batch_feeder.h"

#include <cstdint>

#include "ts/ts_demux.h"
#include "ts/ts_packet.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

// The array of a small batch is reused as it is. One that has grown beyond this returns its memory
// while it is read, and would have to allocate it again for each later batch. So it is released
// once the batches are small again.
constexpr std::uint32_t kSmallBatch = 2 << 20;

constexpr auto kBatchUnit = static_cast<std::uint32_t>(kTsPacketSize);

}  // namespace

// The lock is held from the exchange to the last packet, so that batches are fed in the order in
// which they were received, even if two parse tasks run. A stop ends the batch: the rest would only
// be dropped, and an invalid stream prints a line for each packet.
bool TsBatchFeeder::FeedBatch() {
  const TsDemuxLock lock;
  if (!FetchBatch()) return false;
  const bool is_small = batch_.Size() <= kSmallBatch;
  while (batch_.Size() >= kBatchUnit && g_tsRunning.load()) {
    ts_demux_feed(batch_.ReadPtr(), static_cast<std::int32_t>(kBatchUnit));
    batch_.MoveStart(kBatchUnit);
  }
  if (is_small && batch_.Capacity() > kSmallBatch) CByteBuffer().Swap(batch_);
  return true;
}

// An incomplete packet at the end stays in g_tsStreamBuffer.
bool TsBatchFeeder::FetchBatch() {
  batch_.Reset();
  if (batch_.Initialize() != kBufferOk) return false;
  const MutexLock lock(g_tsStreamLock);
  if (g_tsStreamBuffer->Size() < kBatchUnit) return false;
  batch_.Swap(*g_tsStreamBuffer);
  const std::uint32_t incomplete = batch_.Size() % kBatchUnit;
  return g_tsStreamBuffer->Append(batch_.WritePtr() - incomplete, incomplete) == kBufferOk;
}

}  // namespace stream
