// A transport stream through ts_demux_feed, without the path that leads there in the TS pipeline.
#ifndef BENCH_TS_FEED_H_
#define BENCH_TS_FEED_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "bench/demux_totals.h"
#include "bench/piece_size.h"
#include "bench/pop_frames.h"
#include "common/frame_queue.h"
#include "ts/ts_demux.h"
#include "ts/ts_packet.h"

namespace stream {

inline void ResetProcessTsDemuxer() {
  const TsDemuxLock lock;
  ProcessTsDemuxer().Reset();
}

// Feeds as the TS pipeline does: in batches as large as a write callback's data, one packet per
// call.
inline DemuxTotals DemuxWithFeed(std::span<const std::uint8_t> stream) {
  constexpr std::size_t kBatch = kPieceSize / kTsPacketSize * kTsPacketSize;
  ResetProcessTsDemuxer();
  ResetFrameQueues();
  DemuxTotals totals;
  for (std::size_t batch = 0; batch < stream.size(); batch += kBatch) {
    const TsDemuxLock lock;
    const std::size_t end = std::min(stream.size(), batch + kBatch);
    for (std::size_t packet = batch; packet + kTsPacketSize <= end; packet += kTsPacketSize) {
      ts_demux_feed(stream.data() + packet, static_cast<std::int32_t>(kTsPacketSize));
      PopFrames(g_videoQueue, PopVideoFrame, totals);
      PopFrames(g_audioQueue, PopAudioFrame, totals);
    }
  }
  return totals;
}

}  // namespace stream

#endif  // BENCH_TS_FEED_H_
