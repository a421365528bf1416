// Finds the decode times of the frames of one kind, one frame at a time.
//
// A PES packet with only a PTS is decoded at that time. Its frame still has a `dts`: the component
// reads it from the bytes after the PTS, which are stuffing or the start of the payload. Such a
// `dts` is ignored, and so is one above `pts` or far below it; the decode time is then `pts`. If
// `dts` stops advancing while `pts` advances, every `dts` of the stream is ignored.
//
// A plain value without a lock.
#ifndef HOST_REPORT_DECODE_TIMES_H_
#define HOST_REPORT_DECODE_TIMES_H_

#include <cstdint>
#include <optional>

#include "stream_player.h"

namespace report {

class DecodeTimes {
 public:
  // The decode time of the next frame, 90 kHz, if the `dts` of this stream is valid.
  std::uint64_t DecodeTimeOf(const MediaFrame& frame);

  // False once the stream turns out to have no valid `dts`. Then the decode time of every frame,
  // including earlier ones, is its `pts`.
  bool HasValidDts() const { return frames_without_progress_ < kMaxFramesWithoutProgress; }

 private:
  static constexpr int kMaxFramesWithoutProgress = 3;  // frames in a row

  struct Times {
    std::uint64_t pts;
    std::uint64_t dts;
  };

  std::optional<Times> last_;  // of the last frame with a valid `dts`
  int frames_without_progress_ = 0;
};

}  // namespace report

#endif  // HOST_REPORT_DECODE_TIMES_H_
