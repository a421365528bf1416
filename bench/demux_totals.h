// What a demultiplexer output for a sample. The totals must match, or the comparison is
// meaningless.
#ifndef BENCH_DEMUX_TOTALS_H_
#define BENCH_DEMUX_TOTALS_H_

#include <cstdint>

struct DemuxTotals {
  std::uint64_t frames = 0;
  std::uint64_t bytes = 0;  // payload only
  bool operator==(const DemuxTotals&) const = default;
};

#endif  // BENCH_DEMUX_TOTALS_H_
