// FlvTagParser::ReadTag against libavformat's demultiplexer, on the same bytes and in the same
// process.
#include <benchmark/benchmark.h>

#include <atomic>
#include <cstdio>
#include <span>

#include "bench/bench_report.h"
#include "bench/demux_totals.h"
#include "bench/libavformat_demux.h"
#include "bench/memory_sample.h"
#include "bench/pop_frames.h"
#include "common/adts.h"
#include "common/frame_queue.h"
#include "flv/flv_tag_parser.h"
#include "tests/support/flv_memory_source.h"

using namespace stream;

namespace {

using Bytes = std::span<const std::uint8_t>;

constexpr char kOurs[] = "flv_read_tag";
constexpr char kNoParse[] = "libavformat_noparse";
constexpr char kParse[] = "libavformat_parse";
constexpr std::size_t kHeaderSize = 9;

struct Totals {
  DemuxTotals video;
  DemuxTotals audio;
};

// The tags after the sequence headers. The parser prints a console line for each sequence header.
Bytes MediaTagsOf(Bytes stream) {
  constexpr std::size_t kTypeAt = 4;  // after the size of the previous tag
  constexpr std::size_t kBodyAt = 15;
  Bytes tags = stream.subspan(kHeaderSize);
  while (tags[kTypeAt] == 18 || tags[kBodyAt + 1] == 0) {
    const std::size_t size = std::size_t{tags[5]} << 16 | std::size_t{tags[6]} << 8 | tags[7];
    tags = tags.subspan(kBodyAt + size);
  }
  return tags;
}

// The loop of the play task without its pause.
Totals ReadTags(Bytes tags) {
  ResetFrameQueues();
  std::atomic<std::uint16_t> audio_config{0x1190};
  FlvMemorySource source(tags);
  FlvTagParser parser(source, audio_config);
  Totals totals;
  while (parser.ReadTag()) {
    PopFrames(g_videoQueue, PopVideoFrame, totals.video);
    PopFrames(g_audioQueue, PopAudioFrame, totals.audio);
  }
  return totals;
}

void Report(benchmark::State& state, Bytes stream, std::uint64_t frames) {
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stream.size()));
  state.counters["frames"] = static_cast<double>(frames);
}

void BenchReadTag(benchmark::State& state, Bytes tags) {
  Totals totals;
  while (state.KeepRunning()) totals = ReadTags(tags);
  Report(state, tags, totals.video.frames + totals.audio.frames);
}

void BenchLibavformat(benchmark::State& state, Bytes stream, bool parse) {
  DemuxTotals totals;
  while (state.KeepRunning()) {
    totals = DemuxWithLibavformat(stream, "flv", parse).value_or(DemuxTotals());
  }
  Report(state, stream, totals.frames);
}

// The only differences allowed: our NAL units have a start code where libavformat has a length of
// the same size, and our AAC frames have an ADTS header.
bool SameFrames(Bytes stream) {
  const Totals ours = ReadTags(MediaTagsOf(stream));
  const DemuxTotals theirs = DemuxWithLibavformat(stream, "flv", false).value_or(DemuxTotals());
  const std::uint64_t bytes =
      ours.video.bytes + ours.audio.bytes - ours.audio.frames * kAdtsHeaderSize;
  if (ours.video.frames != 0 && ours.audio.frames != 0 && bytes == theirs.bytes) return true;
  std::fprintf(stderr, "not the same frames: %llu and %llu bytes\n",
               static_cast<unsigned long long>(bytes),
               static_cast<unsigned long long>(theirs.bytes));
  return false;
}

void Register(Bytes stream) {
  const auto add = [](const char* name, auto function) {
    benchmark::RegisterBenchmark(name, function)->Unit(benchmark::kMillisecond);
  };
  add(kOurs, [stream](benchmark::State& state) { BenchReadTag(state, MediaTagsOf(stream)); });
  add(kNoParse, [stream](benchmark::State& state) { BenchLibavformat(state, stream, false); });
  add(kParse, [stream](benchmark::State& state) { BenchLibavformat(state, stream, true); });
}

}  // namespace

int main(int argc, char** argv) {
  const auto sample = LoadMemorySample(VideoAndAudio(".flv"), "h264_aac.flv",
                                       "FLV made by ffmpeg: H.264 1280x720 25/s 5 Mbit/s with "
                                       "B-frames, AAC 128 kbit/s");
  if (!sample || !SameFrames(sample->bytes)) return 1;
  benchmark::AddCustomContext("input", sample->description);
  benchmark::AddCustomContext("libavformat", LibavformatVersion());
  Register(sample->bytes);
  return RunBenchmarks(argc, argv,
                       {{"flv_read_tag to libavformat without parsing", kOurs, kNoParse},
                        {"flv_read_tag to libavformat with parsing", kOurs, kParse}});
}
