// Everything that a report tells, as it was taken down. A plain value without a lock or a clock:
// the times are given, in milliseconds since the recording began. Its size is bounded.
#ifndef HOST_REPORT_REPORT_RECORD_H_
#define HOST_REPORT_REPORT_RECORD_H_

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
  NumberWatch duration;
  NumberWatch buffered_time;
  NumberWatch audio_clock;
  TextLog texts;
  double elapsed_ms = 0;
  bool host_paces = false;  // whether frame calls may wait, so that lateness tells nothing

  void AddVideo(double ms, const MediaFrame& frame);
  void AddAudio(double ms, const MediaFrame& frame);

 private:
  void AddDistance(double ms);
};

}  // namespace report

#endif  // HOST_REPORT_REPORT_RECORD_H_
