// The number of frames of each kind.
#ifndef TESTS_CONFORMANCE_FRAME_COUNTS_H_
#define TESTS_CONFORMANCE_FRAME_COUNTS_H_

#include <cstddef>

struct FrameCounts {
  std::size_t video;
  std::size_t audio;
};

#endif  // TESTS_CONFORMANCE_FRAME_COUNTS_H_
