// What the PAT and the PMTs tell about programs (ISO/IEC 13818-1, 2.4.4), and the two parsers.
//
// A section is taken to lie within one packet and to begin right after the pointer field, whose
// value is not looked at (kept on purpose). What is wrong with a section is printed to standard
// output.
#ifndef TS_TS_PROGRAM_H_
#define TS_TS_PROGRAM_H_

#include <array>
#include <cstdint>

#include "ts/ts_packet.h"

inline constexpr int MAX_PROGRAM_NUMBER = 4;
inline constexpr int kMaxAudioPids = 4;

struct ts_program_info {
  std::uint16_t program_number =
      0;  // raw, in network byte order, kept so on purpose; nothing reads it
  std::uint16_t pmt_pid = 0;
  std::uint16_t pcr_pid = 0;
  std::uint8_t video_stream_type = 0;
  std::uint8_t audio_stream_type = 0;                    // of the last audio stream listed
  std::uint16_t video_pid = 0;                           // of the last video stream listed
  std::array<std::uint16_t, kMaxAudioPids> audio_pid{};  // in the order of the PMT
  std::uint16_t audio_count = 0;                         // how many of them are stored
};

using ts_program_table = std::array<ts_program_info, MAX_PROGRAM_NUMBER>;

// Stores the programs of a PAT packet, at most MAX_PROGRAM_NUMBER. Returns how many, or -1 when the
// packet is no PAT or a bad one. An entry for the network PID is stored like a program on purpose.
std::int32_t parse_pat(const std::uint8_t* packet, ts_program_info* programs);

// Fills in the streams of the program whose PMT has the PID `program->pmt_pid`. Returns 0 when a
// video stream was found, else -1. What was stored before an error was met stays stored.
std::int32_t parse_pmt(const std::uint8_t* packet, ts_program_info* program);

#endif  // TS_TS_PROGRAM_H_
