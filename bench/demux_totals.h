// What a demultiplexer got out of a sample: both must find the same, or the race means nothing.
#ifndef BENCH_DEMUX_TOTALS_H_
#define BENCH_DEMUX_TOTALS_H_

#include <cstdint>

struct DemuxTotals {
  std::uint64_t frames = 0;
  std::uint64_t bytes = 0;  // of payload
};

#endif  // BENCH_DEMUX_TOTALS_H_
