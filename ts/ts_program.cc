#include "ts/ts_program.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>

#include "ts/ts_crc32.h"
#include "ts/ts_stream_type.h"

namespace stream {
namespace {

constexpr unsigned kCrcSize = 4;

// Returns the offset of the section: after the packet header, the adaptation field and the pointer
// field.
unsigned SectionStart(TsPacket packet) {
  switch (packet.AdaptationFieldControl()) {
    case 1:
      return 5;
    case 3:
      return 6 + packet.AdaptationFieldLength();
    default:
      // Kept for compatibility: without a payload, parsing continues at byte 1, where hardly any
      // checksum matches.
      std::printf("ts_hd->header.adaptation_field_ctrl:0x%x\n", packet.AdaptationFieldControl());
      return 1;
  }
}

// Computes the checksum of the section at `start`, over everything before the stored checksum. The
// caller has checked that it is within the packet.
std::uint32_t SectionCrc(TsPacket packet, unsigned start, unsigned section_length) {
  return ts_crc32(packet.Bytes() + start, static_cast<std::uint16_t>(section_length - 1));
}

// Stores the program loop of a PAT, which is between the section's header and its checksum. Returns
// the number of stored programs.
std::int32_t StorePrograms(TsPacket packet, unsigned loop_start, unsigned loop_length,
                           ts_program_info* programs) {
  constexpr unsigned kEntrySize = 4;
  const auto count = static_cast<int>(loop_length / kEntrySize);
  for (int i = 0; i < count; ++i) {
    if (i >= MAX_PROGRAM_NUMBER) {
      std::printf("program number is bigger than MAX_PROGRAM_NUMBER!\n");
      return MAX_PROGRAM_NUMBER;
    }
    const unsigned entry = loop_start + static_cast<unsigned>(i) * kEntrySize;
    programs[i].program_number = packet.RawU16At(entry);
    programs[i].pmt_pid = packet.PidAt(entry + 2);
  }
  return count;
}

// Stores the stream loop of a PMT. Returns true if it contains a video stream.
bool StoreStreams(TsPacket packet, unsigned loop_start, unsigned loop_length,
                  ts_program_info& program) {
  bool has_video = false;
  int audio_index = 0;
  for (unsigned consumed = 0; consumed < loop_length;) {
    const unsigned entry = loop_start + consumed;
    const std::uint8_t type = packet.At(entry);
    const std::uint16_t pid = packet.PidAt(entry + 1);
    consumed += packet.LengthAt(entry + 3) + 5U;
    if (IsVideoStreamType(type)) {
      ts_last_stream_type = type;
      program.video_stream_type = type;
      program.video_pid = pid;
      has_video = true;
    } else if (IsAudioStreamType(type)) {
      program.audio_stream_type = type;
      // Kept for compatibility: the fifth and later audio streams overwrite the last entry.
      audio_index = std::min(audio_index, kMaxAudioPids - 1);
      program.audio_pid[static_cast<std::size_t>(audio_index)] = pid;
      ++audio_index;
    } else {
      ts_last_stream_type = type;
      std::printf("ES stream type isn't known:0x%x\n", type);
    }
  }
  program.audio_count = static_cast<std::uint16_t>(audio_index);
  return has_video;
}

}  // namespace

std::int32_t parse_pat(const std::uint8_t* bytes, ts_program_info* programs) {
  constexpr unsigned kHeaderSize = 8;  // from the table_id to the program loop
  constexpr unsigned kMinSectionLength = 13;
  const TsPacket packet(bytes);
  if (packet.IsNull() || programs == nullptr) {
    std::printf("The parameter is NULL.\n");
    return -1;
  }
  if (packet.Pid() != 0) return -1;

  const unsigned start = SectionStart(packet);
  if (start + kHeaderSize >= kTsPacketSize) {
    std::printf("total_len:%u is too long\n", start);
    return -1;
  }
  if (packet.At(start) != 0) return -1;

  const unsigned section_length = packet.LengthAt(start + 1);
  if (section_length < kMinSectionLength || section_length > kTsPacketSize) {
    std::printf("The media file is not TS file\n");
    return -1;
  }
  const unsigned loop_length = section_length - 9;
  const unsigned crc_position = start + kHeaderSize + loop_length;
  if (crc_position > kTsPacketSize) {
    std::printf("total_len:%u is too long\n", start + kHeaderSize);
    return -1;
  }
  const std::uint32_t stored_crc = packet.U32At(crc_position);
  if (SectionCrc(packet, start, section_length) != stored_crc) {
    std::printf("Pat Data is error!! pat_crc is 0x%x\n", stored_crc);
    return -1;
  }
  return StorePrograms(packet, start + kHeaderSize, loop_length, programs);
}

std::int32_t parse_pmt(const std::uint8_t* bytes, ts_program_info* program) {
  constexpr unsigned kHeaderSize = 12;  // from the table_id to the program descriptors
  const TsPacket packet(bytes);
  if (packet.IsNull() || program == nullptr) {
    std::printf("The parameter is NULL.\n");
    return -1;
  }
  if (program->pmt_pid == 0 || program->pmt_pid != packet.Pid()) return -1;

  const unsigned start = SectionStart(packet);
  if (start >= kTsPacketSize) {
    std::printf("total_len:%u is too long\n", start);
    return -1;
  }
  if (packet.At(start) != 2) {
    std::printf("It isn't available PMT:%u!\n", static_cast<unsigned>(packet.Pid()));
    return -1;
  }
  const unsigned section_length = packet.LengthAt(start + 1);
  program->program_number = packet.RawU16At(start + 3);
  program->pcr_pid = packet.PidAt(start + 8);
  const unsigned info_length = packet.LengthAt(start + 10);
  // In 16 bits: if the section is too short for its parts, the length wraps to a very large value.
  const auto es_length = static_cast<std::uint16_t>(section_length - 9 - info_length - kCrcSize);
  const unsigned es_start = start + kHeaderSize + info_length;
  if (es_start + es_length > kTsPacketSize || section_length < es_length) {
    std::printf("total_len:%u is too long(section_len:%u, program_info_len:%u, es_info_len:%u)\n",
                es_start, section_length, info_length, static_cast<unsigned>(es_length));
    return -1;
  }
  const std::uint32_t stored_crc = packet.U32At(es_start + es_length);
  if (SectionCrc(packet, start, section_length) != stored_crc) {
    std::printf("Pmt Data is error!! pmt_crc is 0x%x\n", stored_crc);
    return -1;
  }
  return StoreStreams(packet, es_start, es_length, *program) ? 0 : -1;
}

}  // namespace stream
