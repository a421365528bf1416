// The demultiplexer's knowledge of the stream: programs, the PIDs that it follows, and whether it
// has found a playable program.
#ifndef TS_TS_CONTEXT_H_
#define TS_TS_CONTEXT_H_

#include <cstddef>
#include <cstdint>

#include "ts/ts_program.h"

namespace stream {

struct ts_context {
  // Processes `count` packets and returns 0.
  using Handler = std::int32_t (*)(ts_context* context, const std::uint8_t* packets,
                                   std::int32_t count);

  std::int32_t program_count = 0;  // valid entries of `programs`; 0 before the first PAT
  std::uint16_t video_pid = 0;     // the PID demultiplexed as video
  ts_program_table programs{};
  Handler handler = nullptr;          // set once by the probe
  std::uint64_t av_packet_count = 0;  // packets received on the video or audio PID

  // The PID demultiplexed as audio; 0 if the first program has no audio stream.
  // Kept for compatibility: always the first audio stream of the first program, whichever program
  // has the video.
  std::uint16_t AudioPid() const { return programs[0].audio_pid[0]; }

  // Returns true if packets with this PID carry the PAT or a PMT.
  bool IsPsiPid(std::uint16_t pid) const {
    if (pid == 0) return true;
    for (std::size_t i = 0; i < static_cast<std::size_t>(program_count); ++i) {
      if (programs[i].pmt_pid == pid) return true;
    }
    return false;
  }
};

// Searches `count` packets for a playable program and sets the context's handler to `handler` if it
// finds one. At least one byte must be readable at `packets`, even if `count` is 0.
std::int32_t ts_probe(ts_context& context, ts_context::Handler handler, const std::uint8_t* packets,
                      std::int32_t count);

// Updates the context from a PAT or PMT packet; other packets change nothing. Reads the first
// packet, and does nothing unless `length` covers one to seven packets.
void get_pmt_info(const std::uint8_t* packet, std::int32_t length, ts_context& context);

}  // namespace stream

#endif  // TS_TS_CONTEXT_H_
