// ts_demux_feed against libavformat's demultiplexer, on the same bytes and in the same process.
#include <benchmark/benchmark.h>

#include <cstdio>
#include <span>

#include "bench/bench_report.h"
#include "bench/demux_totals.h"
#include "bench/libavformat_demux.h"
#include "bench/ts_feed.h"
#include "bench/ts_sample.h"

using namespace stream;

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr char kOurs[] = "ts_demux_feed";
constexpr char kNoParse[] = "libavformat_noparse";
constexpr char kParse[] = "libavformat_parse";

void Report(benchmark::State& state, Bytes stream, const DemuxTotals& totals) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stream.size()));
  state.counters["frames"] = static_cast<double>(totals.frames);
}

void BenchFeed(benchmark::State& state, Bytes stream) {
  DemuxTotals totals;
  while (state.KeepRunning()) totals = DemuxWithFeed(stream);
  Report(state, stream, totals);
}

void BenchLibavformat(benchmark::State& state, Bytes stream, bool parse) {
  DemuxTotals totals;
  while (state.KeepRunning())
    totals = DemuxWithLibavformat(stream, "mpegts", parse).value_or(DemuxTotals());
  Report(state, stream, totals);
}

// The only difference allowed: libavformat also outputs the last PES packet of each of the two
// streams.
bool SameFrames(Bytes stream) {
  const DemuxTotals ours = DemuxWithFeed(stream);
  const DemuxTotals theirs = DemuxWithLibavformat(stream, "mpegts", false).value_or(DemuxTotals());
  if (ours.frames != 0 && ours.frames + 2 == theirs.frames && ours.bytes <= theirs.bytes)
    return true;
  std::fprintf(stderr, "not the same frames: %llu (%llu bytes) and %llu (%llu bytes)\n",
               static_cast<unsigned long long>(ours.frames),
               static_cast<unsigned long long>(ours.bytes),
               static_cast<unsigned long long>(theirs.frames),
               static_cast<unsigned long long>(theirs.bytes));
  return false;
}

void Register(Bytes stream) {
  const auto add = [](const char* name, auto function) {
    benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond);
  };
  add(kOurs, [stream](benchmark::State& state) { BenchFeed(state, stream); });
  add(kNoParse, [stream](benchmark::State& state) { BenchLibavformat(state, stream, false); });
  add(kParse, [stream](benchmark::State& state) { BenchLibavformat(state, stream, true); });
}

}  // namespace

int main(int argc, char** argv) {
  const auto sample = LoadTsSample();
  if (!sample || !SameFrames(sample->bytes)) return 1;
  benchmark::AddCustomContext("input", sample->description);
  benchmark::AddCustomContext("libavformat", LibavformatVersion());
  Register(sample->bytes);
  return RunBenchmarks(argc, argv,
                       {{"ts_demux_feed to libavformat without parsing", kOurs, kNoParse},
                        {"ts_demux_feed to libavformat with parsing", kOurs, kParse}});
}
