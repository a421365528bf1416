// The path of a transport stream's bytes from the write callback to the demultiplexer, and of its
// frames out of the queues: the cost of a byte with a parser that keeps up, and with one that has
// fallen behind.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <memory>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "bench/bench_report.h"
#include "bench/demux_totals.h"
#include "bench/piece_size.h"
#include "bench/pop_frames.h"
#include "bench/ts_feed.h"
#include "bench/ts_sample.h"
#include "common/frame_queue.h"
#include "common/player_port.h"
#include "ts/ts_batch_feeder.h"
#include "ts/ts_download.h"
#include "ts/ts_state.h"

using namespace stream;

namespace {

using Bytes = std::span<const std::uint8_t>;

void Reset() {
  ResetProcessTsDemuxer();
  ResetFrameQueues();
  const std::lock_guard lock(g_tsStreamLock);
  std::destroy_at(&*g_tsStreamBuffer);  // releases the memory of an earlier round
  std::construct_at(&*g_tsStreamBuffer);
  g_tsStreamBuffer->Initialize();
}

// Receives the stream in pieces and parses whenever `backlog` bytes have been received, as
// ParseTs does after its pauses. Returns no frames if bytes were refused.
DemuxTotals Pass(Bytes stream, std::size_t backlog) {
  Reset();
  TsTransfer transfer(PlayerPort(), 0);
  TsBatchFeeder feeder;
  DemuxTotals totals;
  while (!stream.empty()) {
    const Bytes batch = stream.first(std::min(stream.size(), backlog));
    stream = stream.subspan(batch.size());
    for (std::size_t at = 0; at < batch.size(); at += kPieceSize) {
      const std::size_t size = std::min<std::size_t>(kPieceSize, batch.size() - at);
      const auto* bytes = reinterpret_cast<const char*>(batch.data() + at);
      if (transfer.OnBytes(bytes, static_cast<std::uint32_t>(size)) != size) return {};
    }
    while (feeder.FeedBatch()) {
    }
    PopFrames(g_videoQueue, PopVideoFrame, totals);
    PopFrames(g_audioQueue, PopAudioFrame, totals);
  }
  return totals;
}

// Every pass must output `expected`, which is not empty.
void BenchPass(benchmark::State& state, Bytes stream, std::size_t backlog,
               const DemuxTotals& expected) {
  g_tsRunning = true;
  while (state.KeepRunning()) {
    if (expected.frames == 0 || Pass(stream, backlog) != expected)
      return state.SkipWithError("bytes were refused or lost");
  }
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stream.size()));
  state.counters["frames"] = static_cast<double>(expected.frames);
}

}  // namespace

int main(int argc, char** argv) {
  const auto sample = LoadTsSample();
  if (!sample) return 1;
  const DemuxTotals expected = DemuxWithFeed(sample->bytes);
  for (const std::size_t kilobytes : {16U, 64U, 256U, 1024U, 8192U, 65536U}) {
    const std::string name = "batches_of_" + std::to_string(kilobytes) + "_KB";
    benchmark::RegisterBenchmark(name.c_str(), [=, &sample, &expected](benchmark::State& state) {
      BenchPass(state, sample->bytes, kilobytes * 1024, expected);
    })->Unit(benchmark::kMillisecond);
  }
  benchmark::AddCustomContext("input", sample->description);
  return RunBenchmarks(argc, argv, {});
}
