// HLS: a live playlist that is refreshed repeatedly, where the cost of a segment must not grow with
// the length of the list; and an on-demand stream, downloaded and demultiplexed, against libcurl
// alone fetching the same bytes from the same server.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "bench/bench_report.h"
#include "bench/nginx_server.h"
#include "bench/ts_feed.h"
#include "bench/ts_sample.h"
#include "common/frame_queue.h"
#include "hls/hls_stream.h"
#include "hls/m3u8_downloader.h"
#include "hls/playlist_ingest.h"
#include "hls/segment_download.h"
#include "ts/ts_demux.h"
#include "ts/ts_packet.h"

using namespace stream;

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr char kPipeline[] = "hls_30_segments_200_MB";
constexpr char kLibcurl[] = "libcurl_30_segments_200_MB";

// Discards the component's console lines while it exists.
class QuietConsole {
 public:
  QuietConsole() {
    std::fflush(stdout);
    const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
    dup2(nowhere, STDOUT_FILENO);
    close(nowhere);
  }
  ~QuietConsole() {
    std::fflush(stdout);
    dup2(console_, STDOUT_FILENO);
    close(console_);
  }
  QuietConsole(const QuietConsole&) = delete;
  QuietConsole& operator=(const QuietConsole&) = delete;

 private:
  const int console_ = dup(STDOUT_FILENO);
};

// --- A live playlist ---

constexpr int kRefreshes = 8;

std::string LiveName(int count) { return "live_" + std::to_string(count) + "_segments"; }

std::string LiveList(int first, int count) {
  std::string text = "#EXTM3U\n#EXT-X-VERSION:3\n#EXT-X-TARGETDURATION:10\n";
  text += "#EXT-X-MEDIA-SEQUENCE:" + std::to_string(first) + "\n";
  for (int i = first; i < first + count; ++i) {
    text.append("#EXTINF:9.976633,\nsegment-").append(std::to_string(i)).append(".ts\n");
  }
  return text;
}

// The list at each refresh. Each time a tenth of it is new.
std::vector<std::string> LiveLists(int count) {
  std::vector<std::string> lists;
  lists.reserve(kRefreshes);
  for (int i = 0; i < kRefreshes; ++i) lists.push_back(LiveList(i * (count / 10), count));
  return lists;
}

// The work of the playlist thread and the segment thread on these lists, without the downloads.
// Returns the number of segments to download.
std::size_t QueueLists(const std::vector<std::string>& lists) {
  HlsTaskState pipeline;
  pipeline.running = true;
  SegmentHistory history;
  std::size_t downloads = 0;
  for (const std::string& list : lists) {
    QueueSegmentsFromPlaylist(pipeline, "http://host/a/b/list.m3u8", list);
    for (const QueuedSegment& segment : PopQueuedSegments(pipeline, history)) {
      pipeline.stream.ledger.SetSegmentState(segment.entry.uri, kSegmentDownloaded);
      ++downloads;
    }
  }
  pipeline.stream.Clear();
  return downloads;
}

void BenchLive(benchmark::State& state, int count, const std::vector<std::string>& lists) {
  const QuietConsole quiet;
  const int new_ones = (kRefreshes - 1) * (count / 10);
  const auto expected = static_cast<std::size_t>(count) + static_cast<std::size_t>(new_ones);
  while (state.KeepRunning()) {
    if (QueueLists(lists) != expected)
      return state.SkipWithError("a segment was queued twice or never");
  }
  std::size_t bytes = 0;
  for (const std::string& list : lists) bytes += list.size();
  state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(bytes));
}

void RegisterLive(int count) {
  const auto run = [count, lists = LiveLists(count)](benchmark::State& state) {
    BenchLive(state, count, lists);
  };
  benchmark::RegisterBenchmark(LiveName(count).c_str(), run)->Unit(benchmark::kMillisecond);
}

// --- A stream on demand ---

struct Frames {
  std::uint64_t video = 0;
  std::uint64_t audio = 0;
  bool operator==(const Frames&) const = default;
};

// Frames pushed into the current queues so far.
Frames Queued() {
  const std::lock_guard lock(g_frameQueueMutex);
  Frames frames;
  if (g_videoQueue != nullptr) frames.video = g_videoQueue->pushed;
  if (g_audioQueue != nullptr) frames.audio = g_audioQueue->pushed;
  return frames;
}

class OnDemandStream {
 public:
  // The first 200 MB of the sample in 30 segments.
  explicit OnDemandStream(const std::vector<std::uint8_t>& sample) {
    constexpr int kSegments = 30;
    constexpr std::size_t kPackets = 200'000'000 / kSegments / kTsPacketSize;
    std::string list = "#EXTM3U\n";
    for (int i = 0; i < kSegments; ++i) {
      names_.push_back("segment" + std::to_string(i) + ".ts");
      server_.Put(names_.back(),
                  sample.data() + static_cast<std::size_t>(i) * kPackets * kTsPacketSize,
                  kPackets * kTsPacketSize);
      list.append("#EXTINF:10.0,\n").append(names_.back()).append("\n");
    }
    list += "#EXT-X-ENDLIST\n";
    server_.Put(kList, list.data(), list.size());
    bytes_ = kSegments * kPackets * kTsPacketSize;
    frames_ = Count(sample);
  }

  bool Serve() { return server_.Start(); }

  std::string ListUrl() const { return server_.Url(kList); }
  std::vector<std::string> SegmentUrls() const {
    std::vector<std::string> urls;
    for (const std::string& name : names_) urls.push_back(server_.Url(name));
    return urls;
  }
  std::size_t Bytes() const { return bytes_; }
  const Frames& AllFrames() const { return frames_; }

 private:
  Frames Count(const std::vector<std::uint8_t>& sample) const {
    ResetProcessTsDemuxer();
    ResetFrameQueues();
    {
      const TsDemuxLock lock;
      ts_demux_feed(sample.data(), static_cast<std::int32_t>(bytes_));
    }
    const Frames frames = Queued();
    ReleaseFrameQueues();
    return frames;
  }

  static constexpr char kList[] = "list.m3u8";

  NginxServer server_{STREAM_BENCH_DATA "/hls"};
  std::vector<std::string> names_;
  std::size_t bytes_ = 0;
  Frames frames_;
};

// The time from the start of the pipeline to the last frame in its queue; nullopt if that frame was
// not received.
std::optional<double> PlaySeconds(const OnDemandStream& stream) {
  const QuietConsole quiet;
  ResetProcessTsDemuxer();
  CM3u8Downloader downloader(nullptr);
  const auto begin = SteadyClock::now();
  const auto limit = begin + std::chrono::seconds(60);
  downloader.BeginDownload(stream.ListUrl());
  while (Queued() != stream.AllFrames() && SteadyClock::now() < limit) {
    std::this_thread::sleep_for(std::chrono::microseconds(100));
  }
  const auto end = SteadyClock::now();
  downloader.EndDownload();
  if (end >= limit) return std::nullopt;
  return std::chrono::duration<double>(end - begin).count();
}

std::size_t CountBytes(char* /*bytes*/, std::size_t size, std::size_t count, void* total) {
  *static_cast<std::size_t*>(total) += size * count;
  return size * count;
}

// The same requests; the bytes received are only counted.
std::optional<double> FetchSeconds(const OnDemandStream& stream) {
  std::size_t total = 0;
  const auto begin = SteadyClock::now();
  const CurlHandle handle = MakeCurlHandle();
  curl_easy_setopt(handle.get(), CURLOPT_WRITEFUNCTION, CountBytes);
  curl_easy_setopt(handle.get(), CURLOPT_WRITEDATA, &total);
  curl_easy_setopt(handle.get(), CURLOPT_URL, stream.ListUrl().c_str());
  bool complete = curl_easy_perform(handle.get()) == CURLE_OK;
  const std::size_t list_bytes = total;
  for (const std::string& url : stream.SegmentUrls()) {
    curl_easy_setopt(handle.get(), CURLOPT_URL, url.c_str());
    complete = complete && curl_easy_perform(handle.get()) == CURLE_OK;
  }
  const auto end = SteadyClock::now();
  if (!complete || total - list_bytes != stream.Bytes()) return std::nullopt;
  return std::chrono::duration<double>(end - begin).count();
}

using Measurement = std::optional<double> (*)(const OnDemandStream& stream);

void RegisterOnDemand(const char* name, const OnDemandStream& stream, Measurement measurement) {
  const auto run = [&stream, measurement](benchmark::State& state) {
    while (state.KeepRunning()) {
      const auto seconds = measurement(stream);
      if (!seconds) return state.SkipWithError("the stream was not received completely");
      state.SetIterationTime(*seconds);
    }
    state.SetBytesProcessed(state.iterations() * static_cast<std::int64_t>(stream.Bytes()));
  };
  benchmark::RegisterBenchmark(name, run)->UseManualTime()->Unit(benchmark::kMillisecond);
}

}  // namespace

int main(int argc, char** argv) {
  setenv("no_proxy", "*", 1);  // a proxy cannot reach this machine's loopback
  const auto sample = LoadTsSample();
  if (!sample) return 1;
  OnDemandStream stream(sample->bytes);
  if (!stream.Serve()) return 1;
  benchmark::AddCustomContext("input", sample->description);
  benchmark::AddCustomContext("libcurl", curl_version());
  for (const int count : {1'000, 10'000, 100'000}) RegisterLive(count);
  RegisterOnDemand(kPipeline, stream, PlaySeconds);
  RegisterOnDemand(kLibcurl, stream, FetchSeconds);
  return RunBenchmarks(argc, argv,
                       {{"rate, 10,000 segments to 1,000", LiveName(10'000), LiveName(1'000)},
                        {"rate, 100,000 segments to 10,000", LiveName(100'000), LiveName(10'000)},
                        {"time of the pipeline to libcurl alone", kLibcurl, kPipeline}});
}
