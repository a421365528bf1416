// The transport stream demultiplexer: takes 188-byte packets and pushes elementary-stream frames
// into the global frame queues. The payload of one PES packet, as carried, becomes one frame: an
// Annex B byte stream for H.264 and H.265, ADTS frames for AAC. A frame is emitted when the next
// PES packet on its PID begins, so the last frame of a stream stays in its assembler.
//
// The process has one demultiplexer. The state of the elementary streams is reset after each
// ResetFrameQueues. Kept for compatibility:
// - Programs and PIDs are not reset. They apply to the next stream until new PAT and PMT packets
//   replace them.
// - Bytes in an assembler are not discarded. They become a frame when the next PES packet begins.
//
// Threads: one thread at a time. Hold TsDemuxLock from the first feed of a batch to the last.
//
// Errors in a stream are printed to standard output, and demultiplexing continues.
#ifndef TS_TS_DEMUX_H_
#define TS_TS_DEMUX_H_

#include <cstdint>
#include <mutex>

#include "ts/ts_context.h"

// Held by the thread that feeds the demultiplexer, for a whole batch. Never call the player with it
// held.
class TsDemuxLock {
 public:
  TsDemuxLock();

 private:
  std::lock_guard<std::mutex> lock_;
};

// Feeds the whole packets in `length` bytes at `data`. An incomplete packet at the end is ignored.
// Returns 0.
std::int32_t ts_demux_feed(const std::uint8_t* data, std::int32_t length);

// The handler of playable streams: demultiplexes `count` packets with the programs and PIDs of
// `context`. Returns 0.
std::int32_t ts_parse_packets(ts_context* context, const std::uint8_t* packets, std::int32_t count);

// Resets everything to the state at process start. For tests, fuzzers and benchmarks.
void ts_demux_forget();

#endif  // TS_TS_DEMUX_H_
