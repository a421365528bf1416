// Programs as the PAT and the PMTs describe them (ISO/IEC 13818-1, 2.4.4), and the parsers of both
// tables.
//
// A section must be within one packet and begin right after the pointer field.
// Kept for compatibility: the value of the pointer field is ignored. Errors in a section are
// printed to standard output.
#ifndef TS_TS_PROGRAM_H_
#define TS_TS_PROGRAM_H_

#include <array>
#include <cstdint>

#include "ts/ts_packet.h"

namespace stream {

inline constexpr int MAX_PROGRAM_NUMBER = 4;
inline constexpr int kMaxAudioPids = 4;

struct ts_program_info {
  // Kept for compatibility: in network byte order, and nothing reads it.
  std::uint16_t program_number = 0;
  std::uint16_t pmt_pid = 0;
  std::uint16_t pcr_pid = 0;
  std::uint8_t video_stream_type = 0;
  std::uint8_t audio_stream_type = 0;                    // of the last audio stream listed
  std::uint16_t video_pid = 0;                           // of the last video stream listed
  std::array<std::uint16_t, kMaxAudioPids> audio_pid{};  // in the order of the PMT
  std::uint16_t audio_count = 0;                         // number of stored audio PIDs
};

using ts_program_table = std::array<ts_program_info, MAX_PROGRAM_NUMBER>;

// Stores the programs of a PAT packet, at most MAX_PROGRAM_NUMBER. Returns their number, or -1 if
// the packet is not a valid PAT. Kept for compatibility: an entry for the network PID is stored
// like a program.
std::int32_t parse_pat(const std::uint8_t* packet, ts_program_info* programs);

// Stores the streams of the program whose PMT has the PID `program->pmt_pid`. Returns 0 if it found
// a video stream, otherwise -1. Values stored before an error are kept.
std::int32_t parse_pmt(const std::uint8_t* packet, ts_program_info* program);

}  // namespace stream

#endif  // TS_TS_PROGRAM_H_
