// libavformat's demultiplexers, for comparison: over bytes in memory, or from a file.
#ifndef BENCH_LIBAVFORMAT_DEMUX_H_
#define BENCH_LIBAVFORMAT_DEMUX_H_

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "bench/demux_totals.h"

// Reads and releases every packet of a stream. `format` is libavformat's name of the format.
// Without `parse`, payloads are as the container carries them, like the PES packets of
// ts_demux_feed; with `parse`, they are split into access units. Returns nullopt if the stream
// cannot be opened.
std::optional<DemuxTotals> DemuxWithLibavformat(std::span<const std::uint8_t> stream,
                                                const char* format, bool parse);

// Reads and releases every packet of a file, as it is stored. Returns nullopt if the file cannot be
// opened.
std::optional<DemuxTotals> ReadFileWithLibavformat(const std::string& path);

std::string LibavformatVersion();

#endif  // BENCH_LIBAVFORMAT_DEMUX_H_
