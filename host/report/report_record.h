// Everything that a report shows, as recorded. A plain value without a lock or a clock: times are
// arguments, in milliseconds since the recording began. Its size is bounded.
#ifndef HOST_REPORT_REPORT_RECORD_H_
#define HOST_REPORT_REPORT_RECORD_H_

#include <optional>

#include "frame_watch.h"
#include "number_watch.h"
#include "stream_player.h"
#include "text_log.h"

namespace report {

struct ReportRecord {
  FrameWatch video;
  FrameWatch audio;
  // How far video is ahead of audio, in seconds of stream time, at each frame since both have
  // started.
  NumberWatch distance;
  // The extremes of `distance` while a player would have been waiting for the slower kind.
  std::optional<Range> distance_while_waiting;
  NumberWatch duration;
  // MP4 reports the times of samples in decode order, which go back and forth.
  NumberWatch buffered_time{kReorderSeconds};
  NumberWatch audio_clock;
  TextLog texts;
  double elapsed_ms = 0;
  bool host_paces = false;  // whether frame calls may block, which makes lateness meaningless

  void AddVideo(double ms, const MediaFrame& frame);
  void AddAudio(double ms, const MediaFrame& frame);

 private:
  void AddDistance(double ms);
  // How long a player that starts with the first frame of either kind has been waiting for the next
  // frame of `kind`; negative while it still has frames to play.
  double LateSeconds(const FrameWatch& kind, double ms) const;
};

}  // namespace report

#endif  // HOST_REPORT_REPORT_RECORD_H_
