#include "ts/ts_context.h"

#include <cstddef>
#include <cstdio>
#include <optional>

#include "ts/ts_packet.h"
#include "ts/ts_stream_type.h"

namespace stream {
namespace {

constexpr auto kPacketLength = static_cast<std::int32_t>(kTsPacketSize);

void SetProgramCount(ts_context& context, std::int32_t count) {
  if (count > MAX_PROGRAM_NUMBER) {
    std::printf("PMT number=%d,larger than %d\n", count, MAX_PROGRAM_NUMBER);
    count = MAX_PROGRAM_NUMBER;
  }
  context.program_count = count;
}

// Replaces a program whose PMT PID has changed. Its streams are unknown until its PMT is received.
void UpdatePrograms(const std::uint8_t* packet, ts_context& context) {
  ts_program_table listed{};
  const std::int32_t count = parse_pat(packet, listed.data());
  if (count <= 0) return;
  SetProgramCount(context, count);
  for (std::size_t i = 0; i < static_cast<std::size_t>(context.program_count); ++i) {
    if (listed[i].pmt_pid != context.programs[i].pmt_pid) context.programs[i] = listed[i];
  }
}

// Replaces a program whose video PID has changed. Other changes of its streams are ignored.
void UpdateStreams(const std::uint8_t* packet, std::uint16_t pid, ts_context& context) {
  ts_program_table listed{};
  for (std::size_t i = 0; i < static_cast<std::size_t>(context.program_count); ++i) {
    if (context.programs[i].pmt_pid != pid) continue;
    listed[i].pmt_pid = pid;
    if (parse_pmt(packet, &listed[i]) != 0) {
      std::printf("get_pmt_info failed\n");
    } else if (context.video_pid != listed[i].video_pid) {
      context.programs[i] = listed[i];
      context.video_pid = listed[i].video_pid;
    }
  }
}

// Returns the index of the first program whose PMT, with a video stream, is in this packet.
std::optional<std::size_t> FindProgram(const std::uint8_t* packet, ts_context& context) {
  for (std::size_t i = 0; i < static_cast<std::size_t>(context.program_count); ++i) {
    if (parse_pmt(packet, &context.programs[i]) == 0) return i;
  }
  return std::nullopt;
}

// Updates the context from a packet while no handler is set. Returns the program whose PMT was
// found in the packet, if any.
std::optional<std::size_t> ProbePacket(ts_context& context, const std::uint8_t* packet) {
  if (context.program_count == 0) {
    const std::int32_t count = parse_pat(packet, context.programs.data());
    if (count > 0) SetProgramCount(context, count);
    return std::nullopt;
  }
  const std::optional<std::size_t> program = FindProgram(packet, context);
  if (program) context.video_pid = context.programs[*program].video_pid;
  return program;
}

}  // namespace

std::int32_t ts_probe(ts_context& context, ts_context::Handler handler, const std::uint8_t* packets,
                      std::int32_t count) {
  if (!TsPacket(packets).HasSyncByte()) {
    std::printf("The packet isn't TS packet\n");
    return 0;
  }
  std::optional<std::size_t> found;
  for (std::int32_t i = 0; i < count; ++i) {
    const std::uint8_t* packet = packets + std::ptrdiff_t{i} * kPacketLength;
    if (!TsPacket(packet).HasSyncByte()) {
      std::printf("The ts packet has not sync byte\n");
      continue;
    }
    if (const auto program = ProbePacket(context, packet)) found = program;
  }
  if (!found) return 0;

  const std::uint8_t type = context.programs[*found].video_stream_type;
  if (IsPlayableVideo(type)) {
    context.handler = handler;
  } else if (!IsKnownButNotPlayable(type)) {
    std::printf("ES stream type=%d isn't known.\n", type);
  }
  return 0;
}

void get_pmt_info(const std::uint8_t* packet, std::int32_t length, ts_context& context) {
  constexpr std::int32_t kMaxPackets = 7;
  if (length < kPacketLength || length / kPacketLength > kMaxPackets) return;
  const std::uint16_t pid = TsPacket(packet).Pid();
  if (pid == 0) {
    UpdatePrograms(packet, context);
  } else {
    UpdateStreams(packet, pid, context);
  }
}

}  // namespace stream
