// What the demultiplexer knows about the stream: programs, the PIDs that it follows, and whether it
// has met a program that it can play at all.
#ifndef TS_TS_CONTEXT_H_
#define TS_TS_CONTEXT_H_

#include <cstddef>
#include <cstdint>

#include "ts/ts_program.h"

struct ts_context {
  // Takes `count` packets and returns 0.
  using Handler = std::int32_t (*)(ts_context* context, const std::uint8_t* packets,
                                   std::int32_t count);

  std::int32_t program_count = 0;  // valid entries of `programs`; 0 before the first PAT
  std::uint16_t video_pid = 0;     // the PID demultiplexed as video
  ts_program_table programs{};
  Handler handler = nullptr;          // chosen once by the probe
  std::uint64_t av_packet_count = 0;  // packets met on the video or audio PID

  // The PID demultiplexed as audio: always the first audio stream of the first program, whichever
  // program the video came from (kept on purpose). 0 while that program has no audio stream.
  std::uint16_t AudioPid() const { return programs[0].audio_pid[0]; }

  // True when packets with this PID carry the PAT or the PMT of a program.
  bool TellsPrograms(std::uint16_t pid) const {
    if (pid == 0) return true;
    for (std::size_t i = 0; i < static_cast<std::size_t>(program_count); ++i) {
      if (programs[i].pmt_pid == pid) return true;
    }
    return false;
  }
};

// Looks for a program that can be played in `count` packets and gives the context `handler` once
// one is found. There is at least one byte at `packets`, also where no packet is whole.
std::int32_t ts_probe(ts_context& context, ts_context::Handler handler, const std::uint8_t* packets,
                      std::int32_t count);

// Keeps the context current from a PAT or PMT packet; other packets change nothing. The first
// packet is looked at, if `length` is that of at most seven.
void get_pmt_info(const std::uint8_t* packet, std::int32_t length, ts_context& context);

#endif  // TS_TS_CONTEXT_H_
