// Records the frames of one kind as they arrive: exact counts, the points of the charts, and where
// the timestamps do not advance as they should.
//
// Frames are ordered by decode time (decode_times.h). It takes a few frames to see whether `dts` is
// valid, so the steps are recorded both with `dts` and without it.
//
// A plain value without a lock.
#ifndef HOST_REPORT_FRAME_WATCH_H_
#define HOST_REPORT_FRAME_WATCH_H_

#include <cstdint>

#include "bounded_series.h"
#include "decode_times.h"
#include "points.h"
#include "step_watch.h"
#include "stream_player.h"

namespace report {

class FrameWatch {
 public:
  void Add(double ms, const MediaFrame& frame);

  bool HasValidDts() const { return decode_times_.HasValidDts(); }
  const StepWatch& Steps() const { return HasValidDts() ? by_dts_ : by_pts_; }

  std::uint64_t frames = 0;
  std::uint64_t bytes = 0;
  std::uint64_t smallest = 0;  // bytes
  std::uint64_t largest = 0;
  std::uint64_t empty = 0;           // frames without a payload
  std::uint64_t play_time_back = 0;  // playTime far smaller than in the previous frame
  double first_ms = 0;
  double last_ms = 0;
  double longest_silence_ms = 0;     // between two frames
  double longest_silence_at_ms = 0;  // when it ended
  std::uint64_t first_pts = 0;       // of the first frame
  std::uint64_t least_pts = 0;
  std::uint64_t most_pts = 0;

  BoundedSeries<FramePoint> points;

 private:
  void AddFirst(double ms, const MediaFrame& frame);
  void AddNext(double ms, const MediaFrame& frame);

  DecodeTimes decode_times_;
  StepWatch by_dts_;
  StepWatch by_pts_;
  std::uint64_t last_play_time_ = 0;
};

}  // namespace report

#endif  // HOST_REPORT_FRAME_WATCH_H_
