// VideoWatch: tells whether video frames were queued since it was made, also when they have been
// delivered since, and when another start made the queues new and empty.
#ifndef HLS_VIDEO_WATCH_H_
#define HLS_VIDEO_WATCH_H_

#include <cstdint>

class VideoWatch {
 public:
  VideoWatch() : last_(Look()) {}

  // What came between two looks is missed only where it was thrown away before the second, so look
  // often.
  bool HasCome();

 private:
  struct Place {
    std::uint64_t generation;  // of the queues: their count of frames belongs to it
    std::uint64_t pushed;
  };

  static Place Look();

  Place last_;
  bool has_come_ = false;
};

#endif  // HLS_VIDEO_WATCH_H_
