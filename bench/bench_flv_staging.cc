// The path of an FLV stream's bytes from the transfer to the parser: the cost of a byte must not
// depend on how far the parser has fallen behind.
#include <benchmark/benchmark.h>
#include <malloc.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "bench/bench_report.h"
#include "bench/piece_size.h"
#include "flv/flv_download.h"
#include "flv/flv_stream.h"

using namespace stream;

namespace {

constexpr std::uint32_t kMegabyte = 1'000'000;
constexpr std::uint32_t kWhole = 300 * kMegabyte;

// Releases the memory that an earlier round has allocated.
void ResetStream() {
  std::destroy_at(&*g_flvStream);
  std::construct_at(&*g_flvStream);
}

// Appends `total` bytes in pieces. Once `backlog` bytes are unread, the reader consumes one piece
// for each piece appended; at the end it consumes the rest. Returns false if bytes were refused or
// lost.
bool Pass(std::uint32_t total, std::uint32_t backlog) {
  static const std::vector<char> piece(kPieceSize, 0x17);
  static std::vector<std::uint8_t> read(kPieceSize);
  const RunId run = g_flvStream->Begin();
  FlvTransfer transfer(run);
  FlvStreamSource source(run);
  std::uint32_t unread = 0;
  for (std::uint32_t done = 0; done < total; done += kPieceSize, unread += kPieceSize) {
    if (transfer.OnBytes(piece.data(), kPieceSize) != kPieceSize) return false;
    if (unread < backlog) continue;
    if (!source.Read(read.data(), kPieceSize)) return false;
    unread -= kPieceSize;
  }
  g_flvStream->MarkEndOfInput(run);
  while (source.Read(read.data(), kPieceSize)) unread -= kPieceSize;
  return unread == 0;
}

void BenchPass(benchmark::State& state, std::uint32_t total, std::uint32_t backlog) {
  g_flvRunning = true;
  while (state.KeepRunning()) {
    ResetStream();
    if (!Pass(total, backlog)) state.SkipWithError("bytes were refused or lost");
  }
  state.SetBytesProcessed(state.iterations() * std::int64_t{total});
}

void Register(const std::string& name, std::uint32_t total, std::uint32_t backlog) {
  benchmark::RegisterBenchmark(name.c_str(), [=](benchmark::State& state) {
    BenchPass(state, total, backlog);
  })->Unit(benchmark::kMillisecond);
}

std::string Number(std::uint32_t megabytes) { return std::to_string(megabytes) + "_MB"; }

}  // namespace

int main(int argc, char** argv) {
  // Forces every array to be mapped from the system: see bench_byte_buffer.
  constexpr int kMmapThreshold = 65536;
  mallopt(M_MMAP_THRESHOLD, kMmapThreshold);
  std::vector<BenchRatio> ratios;
  for (const std::uint32_t megabytes : {1U, 10U, 100U, 300U}) {
    const std::string whole = "300_MB_at_a_backlog_of_" + Number(megabytes);
    const std::string filled = "fill_and_empty_" + Number(megabytes);
    Register(whole, kWhole, megabytes * kMegabyte);
    Register(filled, megabytes * kMegabyte, megabytes * kMegabyte);
    if (megabytes == 10) continue;
    const std::string title = "cost of a byte, " + Number(megabytes) + " to 10_MB, ";
    ratios.push_back({title + "300_MB_at_a_backlog", "300_MB_at_a_backlog_of_10_MB", whole});
    ratios.push_back({title + "fill_and_empty", "fill_and_empty_10_MB", filled});
  }
  benchmark::AddCustomContext("input", "pieces of 16384 bytes received, and read as large");
  return RunBenchmarks(argc, argv, ratios);
}
