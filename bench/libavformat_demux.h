// The demultiplexers of libavformat, to be measured against: over bytes in memory, or from a file.
#ifndef BENCH_LIBAVFORMAT_DEMUX_H_
#define BENCH_LIBAVFORMAT_DEMUX_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "bench/demux_totals.h"

// Reads every packet of a stream of the format that libavformat knows by this name, and lets go of
// it. Without `parse`, payloads come as the container carries them, which is what ts_demux_feed
// does with PES packets; with it they are cut into access units. Nothing where the stream cannot be
// opened.
std::optional<DemuxTotals> DemuxWithLibavformat(std::span<const std::uint8_t> stream,
                                                const char* format, bool parse);

// Reads every packet of a file, as it is stored, and lets go of it. Nothing where it cannot be
// opened.
std::optional<DemuxTotals> ReadFileWithLibavformat(const std::string& path);

std::string LibavformatVersion();

#endif  // BENCH_LIBAVFORMAT_DEMUX_H_
