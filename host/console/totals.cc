#include "totals.h"

#include <algorithm>

namespace host {
namespace {

std::optional<double> Seconds(const std::optional<std::uint64_t>& ticks) {
  if (!ticks) return std::nullopt;
  return static_cast<double>(*ticks) / kTicksPerSecond;
}

template <typename Value>
void ReplaceIfNewer(std::optional<Value>& value, const std::optional<Value>& newer) {
  if (newer) value = newer;
}

}  // namespace

const char* NameOf(FrameKind kind) { return kind == FrameKind::kVideo ? "video" : "audio"; }

void KindTotals::Add(const MediaFrame& frame) {
  const auto size = static_cast<std::uint64_t>(std::max(frame.size, 0));
  Add(KindTotals{1, size, frame.pts, frame.pts, frame.playTime});
}

void KindTotals::Add(const KindTotals& other) {
  if (other.frames == 0) return;
  frames += other.frames;
  bytes += other.bytes;
  first_pts = first_pts ? std::min(first_pts, other.first_pts) : other.first_pts;
  last_pts = last_pts ? std::max(last_pts, other.last_pts) : other.last_pts;
  last_play_time = other.last_play_time;
}

std::optional<double> KindTotals::FirstSeconds() const { return Seconds(first_pts); }

std::optional<double> KindTotals::LastSeconds() const { return Seconds(last_pts); }

std::optional<double> KindTotals::SpanSeconds() const {
  if (!first_pts || !last_pts) return std::nullopt;
  return Seconds(*last_pts - *first_pts);
}

void PlayTotals::Add(const PlayTotals& later) {
  video.Add(later.video);
  audio.Add(later.audio);
  ReplaceIfNewer(duration, later.duration);
  ReplaceIfNewer(buffered_time, later.buffered_time);
  ReplaceIfNewer(audio_clock, later.audio_clock);
}

}  // namespace host
