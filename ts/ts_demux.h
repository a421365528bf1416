// The transport stream demultiplexer: 188-byte packets in, whole elementary-stream frames out into
// the global frame queues. The payload of one PES packet, as carried, becomes one frame: an Annex B
// byte stream for H.264 and H.265, ADTS frames for AAC. A frame is emitted when the next PES packet
// on its PID begins, so the last one of a stream stays behind.
//
// There is one demultiplexer in the process. What it has learnt about programs and PIDs lives on
// from one stream to the next until new PAT and PMT packets replace it (kept on purpose); the state
// of the elementary streams starts afresh after each ResetFrameQueues, but for bytes that still
// wait in an assembler: those come out as a frame when the next PES packet begins (kept on
// purpose).
//
// Threads: one thread at a time, with TsDemuxLock held from one feed to the last that belongs with
// it.
//
// What is wrong with a stream is printed to standard output and survived.
#ifndef TS_TS_DEMUX_H_
#define TS_TS_DEMUX_H_

#include <cstdint>
#include <mutex>

#include "ts/ts_context.h"

// Held by whoever feeds the demultiplexer, for a whole batch. Never call the player with it held.
class TsDemuxLock {
 public:
  TsDemuxLock();

 private:
  std::lock_guard<std::mutex> lock_;
};

// Feeds the whole packets in `length` bytes at `data`; a tail shorter than a packet is ignored.
// Returns 0.
std::int32_t ts_demux_feed(const std::uint8_t* data, std::int32_t length);

// The handler of playable streams: demultiplexes `count` packets by what `context` knows. Returns
// 0.
std::int32_t ts_parse_packets(ts_context* context, const std::uint8_t* packets, std::int32_t count);

// Forgets everything, as if the process had just started. For tests, fuzzers and benchmarks.
void ts_demux_forget();

#endif  // TS_TS_DEMUX_H_
