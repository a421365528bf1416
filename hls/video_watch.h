// VideoWatch: detects whether video frames were queued since it was created, even if they have been
// delivered or if another start has replaced the queues.
#ifndef HLS_VIDEO_WATCH_H_
#define HLS_VIDEO_WATCH_H_

#include <cstdint>

#include "common/run_id.h"

class VideoWatch {
 public:
  VideoWatch() : last_(Look()) {}

  // Returns whether a video frame was queued. A frame is missed if the queues are replaced between
  // its arrival and the next call, so call this often.
  bool HasCome();

 private:
  struct Place {
    RunId run;  // of the queues; `pushed` counts frames within it
    std::uint64_t pushed;
  };

  static Place Look();

  Place last_;
  bool has_come_ = false;
};

#endif  // HLS_VIDEO_WATCH_H_
