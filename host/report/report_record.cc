#include "report_record.h"

namespace report {
namespace {

constexpr double kLateSeconds = 0.1;

}  // namespace

void ReportRecord::AddVideo(double ms, const MediaFrame& frame) {
  video.Add(ms, frame);
  AddDistance(ms);
}

void ReportRecord::AddAudio(double ms, const MediaFrame& frame) {
  audio.Add(ms, frame);
  AddDistance(ms);
}

void ReportRecord::AddDistance(double ms) {
  if (video.frames == 0 || audio.frames == 0) return;
  const double ahead = SecondsBetween(audio.Steps().reached_pts, video.Steps().reached_pts);
  distance.Add(ms, ahead);
  if (LateSeconds(ahead > 0 ? audio : video, ms) < kLateSeconds) return;
  const Range alone{ahead, ahead};
  if (distance_while_waiting) {
    distance_while_waiting->Join(alone);
  } else {
    distance_while_waiting = alone;
  }
}

double ReportRecord::LateSeconds(const FrameWatch& kind, double ms) const {
  const FrameWatch& first = video.first_ms <= audio.first_ms ? video : audio;
  const double due = (ms - first.first_ms) / kMsPerSecond;
  return due - SecondsBetween(first.first_pts, kind.first_pts) - kind.Steps().PlayedSeconds();
}

}  // namespace report
