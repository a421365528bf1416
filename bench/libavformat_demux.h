// The demultiplexer of libavformat over bytes in memory, to be measured against.
#ifndef BENCH_LIBAVFORMAT_DEMUX_H_
#define BENCH_LIBAVFORMAT_DEMUX_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "bench/demux_totals.h"

// Reads every packet of the stream and lets go of it. Without `parse`, payloads come as the PES
// packets carry them, which is what ts_demux_feed does; with it they are cut into access units.
// Nothing where the stream cannot be opened.
std::optional<DemuxTotals> DemuxWithLibavformat(std::span<const std::uint8_t> stream, bool parse);

std::string LibavformatVersion();

#endif  // BENCH_LIBAVFORMAT_DEMUX_H_
