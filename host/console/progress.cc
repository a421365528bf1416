#include "progress.h"

#include <algorithm>

#include "text.h"

namespace host {
namespace {

constexpr double kRedrawMs = 250;
constexpr double kRateWindowMs = 2000;
constexpr double kBytesPerMegabyte = 1e6;

std::string Megabytes(double bytes) { return FixedText(bytes / kBytesPerMegabyte, 2) + " MB"; }

}  // namespace

std::string ProgressText(const PlayTotals& totals, double bytes_per_second) {
  const std::uint64_t play_time =
      std::max(totals.video.last_play_time, totals.audio.last_play_time);
  const double media_seconds = static_cast<double>(play_time) / kTicksPerSecond;
  const std::string duration = totals.duration ? FixedText(*totals.duration, 1) : "?";
  return FixedText(media_seconds, 1) + " / " + duration + " s  " +
         std::to_string(totals.video.frames) + " video  " + std::to_string(totals.audio.frames) +
         " audio  " + Megabytes(static_cast<double>(totals.Bytes())) + "  " +
         Megabytes(bytes_per_second) + "/s";
}

double RateMeter::Update(double now_ms, std::uint64_t bytes) {
  samples_.push_back({now_ms, bytes});
  while (samples_.size() > 2 && now_ms - samples_.front().at_ms > kRateWindowMs) {
    samples_.pop_front();
  }
  const double elapsed_ms = now_ms - samples_.front().at_ms;
  if (elapsed_ms <= 0) return 0;
  return static_cast<double>(bytes - samples_.front().bytes) * 1000 / elapsed_ms;
}

void ProgressLine::Draw(double now_ms, const PlayTotals& totals) {
  next_ms_ = now_ms + kRedrawMs;
  screen_.Progress(ProgressText(totals, rate_.Update(now_ms, totals.Bytes())));
}

}  // namespace host
