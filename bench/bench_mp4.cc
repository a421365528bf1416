// Reads a one-hour MP4 file through <mp4v2/mp4v2.h>: opens it, looks up samples near its end, and
// reads every sample as the pipeline does, against libavformat on the same file.
#include <benchmark/benchmark.h>
#include <mp4v2/mp4v2.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>

#include "bench/bench_report.h"
#include "bench/demux_totals.h"
#include "bench/libavformat_demux.h"
#include "bench/looped_sample.h"
#include "mp4/mp4_file_handle.h"

using namespace stream;

namespace {

namespace fs = std::filesystem;

constexpr char kOurs[] = "mp4_read_every_sample";
constexpr char kTheirs[] = "libavformat_noparse";

// One minute, repeated to one hour.
constexpr char kEncode[] =
    "-f lavfi -i testsrc2=size=640x360:rate=30:duration=60"
    " -f lavfi -i sine=frequency=440:sample_rate=44100:duration=60"
    " -c:v libx264 -preset veryfast -bf 2 -g 60 -pix_fmt yuv420p -c:a aac -b:a 128k";
constexpr int kRepeats = 59;
constexpr char kDescription[] =
    "MP4 made by ffmpeg: H.264 640x360 30/s with B-frames, AAC 44.1 kHz";

Mp4FileHandle Open(const std::string& path) { return Mp4FileHandle(MP4Read(path.c_str())); }

// The calls that the pipeline makes for a sample. Returns false after the last sample.
bool ReadOne(MP4FileHandle file, MP4TrackId track, MP4SampleId sample, DemuxTotals& totals) {
  std::uint8_t* bytes = nullptr;
  std::uint32_t size = 0;
  MP4Timestamp start = 0;
  MP4Duration duration = 0;
  MP4Duration offset = 0;
  bool is_sync = false;
  benchmark::DoNotOptimize(MP4GetTrackTimeScale(file, track));
  benchmark::DoNotOptimize(MP4GetSampleTime(file, track, sample));
  benchmark::DoNotOptimize(MP4GetSampleFileOffset(file, track, sample));
  if (!MP4ReadSample(file, track, sample, &bytes, &size, &start, &duration, &offset, &is_sync))
    return false;
  totals.frames += 1;
  totals.bytes += size;
  benchmark::DoNotOptimize(bytes[0]);
  MP4Free(bytes);
  return true;
}

// Reads video and audio alternately from the given samples on, at most `turns` of each.
DemuxTotals ReadInTurns(MP4FileHandle file, std::array<MP4SampleId, 2> next, int turns) {
  std::array<bool, 2> done{};
  DemuxTotals totals;
  for (int turn = 0; turn != turns && !(done[0] && done[1]); ++turn) {
    for (std::size_t i = 0; i < next.size(); ++i) {
      done[i] = done[i] || !ReadOne(file, static_cast<MP4TrackId>(i + 1), next[i]++, totals);
    }
  }
  return totals;
}

DemuxTotals ReadEverySample(const std::string& path) {
  constexpr int kWithoutEnd = -1;
  const Mp4FileHandle file = Open(path);
  return ReadInTurns(file.get(), {1, 1}, kWithoutEnd);
}

void Report(benchmark::State& state, const DemuxTotals& totals) {
  const auto runs = static_cast<std::int64_t>(state.iterations());
  state.SetBytesProcessed(runs * static_cast<std::int64_t>(totals.bytes));
  state.SetItemsProcessed(runs * static_cast<std::int64_t>(totals.frames));
}

void BenchEverySample(benchmark::State& state, const std::string& path) {
  DemuxTotals totals;
  while (state.KeepRunning()) totals = ReadEverySample(path);
  Report(state, totals);
}

void BenchLibavformat(benchmark::State& state, const std::string& path) {
  DemuxTotals totals;
  while (state.KeepRunning()) totals = ReadFileWithLibavformat(path).value_or(DemuxTotals());
  Report(state, totals);
}

void BenchOpen(benchmark::State& state, const std::string& path, bool already_open) {
  const Mp4FileHandle other = already_open ? Open(path) : nullptr;
  while (state.KeepRunning()) benchmark::DoNotOptimize(Open(path));
}

// One pass of the pipeline near the end of the file: it opens the file while the previous pass
// still has it open.
void BenchTail(benchmark::State& state, const std::string& path, std::array<MP4SampleId, 2> from,
               bool already_open) {
  constexpr int kTurns = 5;
  constexpr std::uint64_t kSamples = 10;
  const Mp4FileHandle other = already_open ? Open(path) : nullptr;
  if (other != nullptr) ReadInTurns(other.get(), from, kTurns);
  while (state.KeepRunning()) {
    const Mp4FileHandle file = Open(path);
    const DemuxTotals totals = ReadInTurns(file.get(), from, kTurns);
    if (totals.frames != kSamples) state.SkipWithError("samples are missing");
  }
}

// The first of the last five samples of each track.
std::array<MP4SampleId, 2> FirstOfTail(const std::string& path) {
  const Mp4FileHandle file = Open(path);
  std::array<MP4SampleId, 2> from{};
  for (std::size_t i = 0; i < from.size(); ++i) {
    const auto track = static_cast<MP4TrackId>(i + 1);
    while (MP4GetSampleTime(file.get(), track, from[i] + 5) != MP4_INVALID_TIMESTAMP) ++from[i];
  }
  return from;
}

bool SameSamples(const std::string& path, DemuxTotals& totals) {
  totals = ReadEverySample(path);
  const DemuxTotals theirs = ReadFileWithLibavformat(path).value_or(DemuxTotals());
  if (totals.frames != 0 && totals.frames == theirs.frames && totals.bytes == theirs.bytes)
    return true;
  std::fprintf(stderr, "not the same samples: %llu (%llu bytes) and %llu (%llu bytes)\n",
               static_cast<unsigned long long>(totals.frames),
               static_cast<unsigned long long>(totals.bytes),
               static_cast<unsigned long long>(theirs.frames),
               static_cast<unsigned long long>(theirs.bytes));
  return false;
}

void Register(const std::string& path) {
  const auto add = [](const char* name, benchmark::TimeUnit unit, auto function) {
    benchmark::RegisterBenchmark(name, function)->Unit(unit);
  };
  const auto tail = FirstOfTail(path);
  for (const bool already_open : {false, true}) {
    add(already_open ? "mp4_open_beside_another" : "mp4_open", benchmark::kMicrosecond,
        [=](benchmark::State& state) { BenchOpen(state, path, already_open); });
    add(already_open ? "mp4_open_and_read_10_at_the_end_beside_another"
                     : "mp4_open_and_read_10_at_the_end",
        benchmark::kMicrosecond,
        [=](benchmark::State& state) { BenchTail(state, path, tail, already_open); });
  }
  add(kOurs, benchmark::kMillisecond,
      [=](benchmark::State& state) { BenchEverySample(state, path); });
  add(kTheirs, benchmark::kMillisecond,
      [=](benchmark::State& state) { BenchLibavformat(state, path); });
}

}  // namespace

int main(int argc, char** argv) {
  const fs::path path = fs::path(STREAM_BENCH_DATA) / "one_hour.mp4";
  DemuxTotals totals;
  if (!HaveLoopedSample({kEncode, ".mp4", kRepeats}, path) || !SameSamples(path.string(), totals))
    return 1;
  benchmark::AddCustomContext("input", std::string(kDescription) + ", " +
                                           std::to_string(totals.frames) + " samples, " +
                                           std::to_string(fs::file_size(path)) + " bytes");
  benchmark::AddCustomContext("libavformat", LibavformatVersion());
  Register(path.string());
  return RunBenchmarks(argc, argv,
                       {{"every sample, to libavformat without parsing", kOurs, kTheirs}});
}
