// The playlist parser on texts of increasing length: the cost of a byte must not depend on the
// length.
#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "bench/bench_report.h"
#include "hls/playlist/m3u8_playlist.h"
#include "hls/playlist/m3u8_text.h"

using namespace stream;

namespace {

constexpr std::size_t kMegabyte = 1'000'000;

std::string Segments(int count) {
  std::string text = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:10\n";
  for (int i = 0; i < count; ++i) {
    text.append("#EXTINF:9.976633,\nsegment-").append(std::to_string(i)).append(".ts\n");
  }
  return text + "#EXT-X-ENDLIST\n";
}

// Lists as packagers write them. Each variant has its own address and bandwidth.
std::string Variants(std::size_t length) {
  std::string text = "#EXTM3U\n";
  for (int i = 0; text.size() < length; ++i) {
    const std::string number = std::to_string(800'000 + i);
    text.append("#EXT-X-STREAM-INF:PROGRAM-ID=1,BANDWIDTH=").append(number);
    text += ",RESOLUTION=1280x720,CODECS=\"avc1.64001f,mp4a.40.2\",FRAME-RATE=25.000\n";
    text.append("v").append(number).append(".m3u8\n");
  }
  return text;
}

// One line that repeats the same few names.
std::string RepeatedNames(std::size_t length) {
  std::string text;
  while (text.size() < length) text += "PROGRAM-ID=1,BANDWIDTH=800000,RESOLUTION=1280x720,";
  return text;
}

// One line in which all names differ. The result is an ordered map of all of them.
std::string DifferentNames(std::size_t length) {
  std::string text;
  for (int i = 0; text.size() < length; ++i) text += "NAME-" + std::to_string(i) + "=value,";
  return text;
}

void Parse(const std::string& text) {
  M3u8Header header;
  std::int64_t sequence = 0;
  M3u8Table entries;
  ParseM3u8(header, "http://host/a/b/list.m3u8", text, sequence, entries);
  benchmark::DoNotOptimize(entries.size());
}

void ParseList(const std::string& text) {
  benchmark::DoNotOptimize(ParseAttributeList(text, ",", "=").size());
}

void Register(const std::string& name, void (*parse)(const std::string&), const std::string& text) {
  const auto run = [parse, text](benchmark::State& state) {
    while (state.KeepRunning()) parse(text);
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(text.size()));
  };
  benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  Register("segments_1000", Parse, Segments(1'000));
  Register("segments_10000", Parse, Segments(10'000));
  Register("segments_100000", Parse, Segments(100'000));
  Register("segments_1000000", Parse, Segments(1'000'000));
  Register("variants_500_KB", Parse, Variants(kMegabyte / 2));
  Register("variants_5_MB", Parse, Variants(5 * kMegabyte));
  Register("variants_50_MB", Parse, Variants(50 * kMegabyte));
  Register("list_of_repeated_names_500_KB", ParseList, RepeatedNames(kMegabyte / 2));
  Register("list_of_repeated_names_5_MB", ParseList, RepeatedNames(5 * kMegabyte));
  Register("list_of_repeated_names_50_MB", ParseList, RepeatedNames(50 * kMegabyte));
  Register("list_of_different_names_500_KB", ParseList, DifferentNames(kMegabyte / 2));
  Register("list_of_different_names_5_MB", ParseList, DifferentNames(5 * kMegabyte));
  const std::vector<BenchRatio> ratios = {
      {"rate, 10,000 segments to 1,000", "segments_10000", "segments_1000"},
      {"rate, 100,000 segments to 10,000", "segments_100000", "segments_10000"},
      {"rate, 1,000,000 segments to 100,000", "segments_1000000", "segments_100000"},
      {"rate, 5 MB of variants to 500 KB", "variants_5_MB", "variants_500_KB"},
      {"rate, 50 MB of variants to 5 MB", "variants_50_MB", "variants_5_MB"},
      {"rate, 5 MB of repeated names to 500 KB", "list_of_repeated_names_5_MB",
       "list_of_repeated_names_500_KB"},
      {"rate, 50 MB of repeated names to 5 MB", "list_of_repeated_names_50_MB",
       "list_of_repeated_names_5_MB"},
      {"rate, 5 MB of different names to 500 KB", "list_of_different_names_5_MB",
       "list_of_different_names_500_KB"},
  };
  return RunBenchmarks(argc, argv, ratios);
}
