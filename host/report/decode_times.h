// Finds the decode times of the frames of one kind, each as it arrives.
//
// A PES packet of a transport stream that has a PTS alone is decoded at that time, but its frame
// has a `dts` all the same: it was read from the bytes after the PTS, which are stuffing or the
// first of the payload. Such a `dts` does not count, and neither does one that is above `pts` or
// far below it; the frame then decodes at its `pts`. Where `dts` stands still though `pts` goes on,
// no `dts` of the stream counts.
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
  // The decode time of the next frame, 90 kHz, as if the `dts` of this stream counted.
  std::uint64_t Of(const MediaFrame& frame);

  // False once the frames were found to have no `dts`: then each decodes at its `pts`, also those
  // before.
  bool DtsCounts() const { return stands_still_ < kMostStandingStill; }

 private:
  static constexpr int kMostStandingStill = 3;  // frames in a row

  struct Times {
    std::uint64_t pts;
    std::uint64_t dts;
  };

  std::optional<Times> last_;  // of the last frame whose `dts` counts
  int stands_still_ = 0;
};

}  // namespace report

#endif  // HOST_REPORT_DECODE_TIMES_H_
