// Measures how long EndDownload takes while a server sends no reply or stalls in the body. Fails
// only if it could not measure.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "public/stream_downloader.h"
#include "tests/support/test_server.h"

namespace {

constexpr std::size_t kStops = 10;
// The stops are spread over the interval between two checks of the run flag by a transfer.
constexpr std::chrono::milliseconds kBetweenLooks{1000};

struct Format {
  const char* name;
  const char* file;
};
constexpr Format kFormats[] = {
    {"HLS", "a.m3u8"}, {"MPEG-TS", "a.ts"}, {"FLV", "a.flv"}, {"MP4", "a.mp4"}};

struct Silence {
  const char* name;
  const char* path;
};
constexpr Silence kSilences[] = {{"no answer", "/silent/"}, {"stalled in the body", "/stall/"}};

// The duration in ms of a stop that begins `after_request` after the server has received the
// request. Negative if the server receives none.
double StopMs(const std::string& path, std::chrono::milliseconds after_request) {
  TestServer server;
  server.Serve(std::string(100'000, '\0'));
  CStreamDownloader downloader(nullptr);
  if (!downloader.BeginDownload(server.Url(path)) || !server.WaitForRequests(1)) return -1;
  std::this_thread::sleep_for(after_request);
  const auto began = std::chrono::steady_clock::now();
  downloader.EndDownload();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - began)
      .count();
}

std::vector<double> StopsOf(const Format& format, const Silence& silence) {
  std::vector<double> stops;
  for (std::size_t i = 0; i < kStops; ++i) {
    const double ms = StopMs(std::string(silence.path) + format.file, i * kBetweenLooks / kStops);
    if (ms >= 0) stops.push_back(ms);
  }
  std::sort(stops.begin(), stops.end());
  return stops;
}

double Quantile(const std::vector<double>& sorted, double share) {
  const double rank = std::ceil(share * static_cast<double>(sorted.size()));
  return sorted[static_cast<std::size_t>(std::max(rank, 1.0)) - 1];
}

}  // namespace

int main() {
  bool has_measured_all = true;
  std::string table = "\nms of EndDownload                stops   median     95 %  maximum\n";
  for (const Format& format : kFormats) {
    for (const Silence& silence : kSilences) {
      const std::vector<double> stops = StopsOf(format, silence);
      const std::string name = std::string(format.name) + ", " + silence.name;
      has_measured_all = has_measured_all && stops.size() == kStops;
      if (stops.empty()) continue;
      char line[128];
      std::snprintf(line, sizeof(line), "%-32s %5zu  %7.1f  %7.1f  %7.1f\n", name.c_str(),
                    stops.size(), Quantile(stops, 0.5), Quantile(stops, 0.95), stops.back());
      table += line;
    }
  }
  // Printed at the end, because the component writes to standard output too.
  std::fputs(table.c_str(), stdout);
  return has_measured_all ? 0 : 1;
}
