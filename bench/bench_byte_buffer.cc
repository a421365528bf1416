// CByteBuffer while a reader falls behind: the cost of a byte must not depend on the backlog.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <string>
#include <vector>

#include "bench/bench_report.h"
#include "bench/piece_size.h"
#include "common/byte_buffer.h"

using namespace stream;

namespace {

constexpr std::uint32_t kMegabyte = 1'000'000;
constexpr std::uint32_t kRead = 188;  // bytes that the reader consumes after each piece

std::string Name(unsigned megabytes) { return "append_" + std::to_string(megabytes) + "_MB"; }

// Appends `total` bytes in pieces to a new buffer. The reader consumes little, so most bytes become
// backlog.
void BenchAppend(benchmark::State& state, std::uint32_t total) {
  const std::vector<std::uint8_t> piece(kPieceSize, 0x47);
  while (state.KeepRunning()) {
    CByteBuffer buffer;
    std::uint32_t status = buffer.Initialize();
    for (std::uint32_t done = 0; done < total && status == kBufferOk; done += kPieceSize) {
      status = buffer.Append(piece.data(), kPieceSize);
      benchmark::DoNotOptimize(*buffer.ReadPtr());
      buffer.MoveStart(kRead);
    }
    if (status != kBufferOk) state.SkipWithError("the buffer refused a piece");
  }
  state.SetBytesProcessed(state.iterations() * std::int64_t{total});
}

}  // namespace

int main(int argc, char** argv) {
  // Forces every array, also a small one, to be mapped from the system and unmapped again.
  // Otherwise small arrays reuse memory of an earlier round and only large ones pay for page
  // faults, which would hide the cost of the buffer itself.
  constexpr int kMmapThreshold = 65536;
  mallopt(M_MMAP_THRESHOLD, kMmapThreshold);
  constexpr unsigned kBacklogs[] = {1, 10, 50, 200};
  std::vector<BenchRatio> ratios;
  for (const unsigned megabytes : kBacklogs) {
    benchmark::RegisterBenchmark(
        Name(megabytes).c_str(),
        [megabytes](benchmark::State& state) { BenchAppend(state, megabytes * kMegabyte); })
        ->UseRealTime()
        ->Unit(benchmark::kMillisecond);
    const std::string title = "cost of a byte, " + std::to_string(megabytes) + " MB to 10 MB";
    if (megabytes != 10) ratios.push_back({title, Name(10), Name(megabytes)});
  }
  benchmark::AddCustomContext("input", "pieces of 16384 bytes appended, 188 bytes read after each");
  return RunBenchmarks(argc, argv, ratios);
}
