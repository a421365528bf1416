#include "report_record.h"

namespace report {

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
  distance.Add(ms, SecondsBetween(audio.reached_pts, video.reached_pts));
}

}  // namespace report
