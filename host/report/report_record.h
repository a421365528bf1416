// Everything that a report tells, as it was taken down. A plain value without a lock or a clock:
// the times are given, in milliseconds since the recording began. Its size is bounded.
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
  // How far video has got before audio, in seconds of stream time, at each frame since both came.
  NumberWatch distance;
  // Its extremes while a player would have been waiting for the one behind.
  std::optional<Range> awaited_distance;
  NumberWatch duration;
  // In MP4 the times of samples in the order in which they are decoded, which go back and forth.
  NumberWatch buffered_time{kReorderSeconds};
  NumberWatch audio_clock;
  TextLog texts;
  double elapsed_ms = 0;
  bool host_paces = false;  // whether frame calls may block, so that lateness means nothing

  void AddVideo(double ms, const MediaFrame& frame);
  void AddAudio(double ms, const MediaFrame& frame);

 private:
  void AddDistance(double ms);
  // How long a player that starts with the first frame of all has been waiting for the next one of
  // a kind; negative where it has frames in hand.
  double LateSeconds(const FrameWatch& kind, double ms) const;
};

}  // namespace report

#endif  // HOST_REPORT_REPORT_RECORD_H_
