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
#include "bench/pop_frames.h"
#include "bench/ts_sample.h"
#include "common/frame_queue.h"
#include "common/player_port.h"
#include "ts/ts_batch_feeder.h"
#include "ts/ts_demux.h"
#include "ts/ts_download.h"
#include "ts/ts_state.h"

using namespace stream;

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr std::size_t kPiece = 16384;  // the most that libcurl passes to a write callback

void Reset() {
  {
    const TsDemuxLock lock;
    ProcessTsDemuxer().Reset();
  }
  ResetFrameQueues();
  const std::lock_guard lock(g_tsStreamLock);
  std::destroy_at(&*g_tsStreamBuffer);  // releases the memory of an earlier round
  std::construct_at(&*g_tsStreamBuffer);
  g_tsStreamBuffer->Initialize();
}

// Receives the stream in pieces and parses whenever `backlog` bytes have been received, as
// ParseTs does after its pauses. Returns nothing if bytes were refused.
DemuxTotals Pass(Bytes stream, std::size_t backlog) {
  Reset();
  TsTransfer transfer(PlayerPort(), 0);
  TsBatchFeeder feeder;
  DemuxTotals totals;
  while (!stream.empty()) {
    const Bytes batch = stream.first(std::min(stream.size(), backlog));
    stream = stream.subspan(batch.size());
    for (std::size_t at = 0; at < batch.size(); at += kPiece) {
      const std::size_t size = std::min(kPiece, batch.size() - at);
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

void BenchPass(benchmark::State& state, Bytes stream, std::size_t backlog) {
  g_tsRunning = true;
  DemuxTotals totals;
  while (state.KeepRunning()) totals = Pass(stream, backlog);
  if (totals.frames == 0) state.SkipWithError("bytes were refused or lost");
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stream.size()));
  state.counters["frames"] = static_cast<double>(totals.frames);
}

}  // namespace

int main(int argc, char** argv) {
  const auto sample = LoadTsSample();
  if (!sample) return 1;
  for (const std::size_t kilobytes : {16U, 64U, 256U, 1024U, 8192U, 65536U}) {
    const std::string name = "batches_of_" + std::to_string(kilobytes) + "_KB";
    benchmark::RegisterBenchmark(name.c_str(), [=, &sample](benchmark::State& state) {
      BenchPass(state, sample->bytes, kilobytes * 1024);
    })->Unit(benchmark::kMillisecond);
  }
  benchmark::AddCustomContext("input", sample->description);
  return RunBenchmarks(argc, argv, {});
}
