// Builds transport stream packets (ISO/IEC 13818-1). They are well-formed unless a test damages
// them.
#ifndef TESTS_SUPPORT_TS_PACKETS_H_
#define TESTS_SUPPORT_TS_PACKETS_H_

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "ts/ts_crc32.h"
#include "ts/ts_packet.h"

namespace stream {

namespace ts_test {

using Packet = std::array<std::uint8_t, kTsPacketSize>;
using Bytes = std::vector<std::uint8_t>;

inline constexpr std::uint16_t kPmtPid = 0x100;
inline constexpr std::uint16_t kVideoPid = 0x101;
inline constexpr std::uint16_t kAudioPid = 0x102;

inline std::uint8_t High(std::size_t value) { return static_cast<std::uint8_t>(value >> 8); }
inline std::uint8_t Low(std::size_t value) { return static_cast<std::uint8_t>(value); }

inline void Append(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
}

// A packet with this header and payload. If the payload is shorter than 184 bytes, stuffing in an
// adaptation field precedes it, or, if `pad_after`, 0xFF bytes follow it.
inline Packet MakePacket(std::uint16_t pid, bool unit_start, int counter, const Bytes& payload,
                         bool pad_after = false) {
  constexpr std::size_t kPayloadSize = kTsPacketSize - 4;
  Packet packet;
  packet.fill(0xFF);
  packet[0] = kTsSyncByte;
  packet[1] = static_cast<std::uint8_t>((unit_start ? 0x40 : 0) | High(pid));
  packet[2] = Low(pid);
  const std::size_t stuffing =
      pad_after ? 0 : kPayloadSize - std::min(kPayloadSize, payload.size());
  packet[3] = static_cast<std::uint8_t>((stuffing != 0 ? 0x30 : 0x10) | (counter & 15));
  if (stuffing != 0) packet[4] = Low(stuffing - 1);
  if (stuffing > 1) packet[5] = 0;
  std::copy_n(payload.begin(), std::min(kPayloadSize, payload.size()),
              packet.begin() + 4 + static_cast<std::ptrdiff_t>(stuffing));
  return packet;
}

// A section with its length and checksum filled in. `body` is what is between the section_length
// field and the checksum.
inline Bytes MakeSection(std::uint8_t table_id, const Bytes& body) {
  const std::size_t length = body.size() + 4;
  Bytes section = {table_id, static_cast<std::uint8_t>(0xB0 | High(length)), Low(length)};
  Append(section, body);
  const std::uint32_t crc = ts_crc32(section.data(), static_cast<std::uint16_t>(section.size()));
  Append(section, {Low(crc >> 24), Low(crc >> 16), Low(crc >> 8), Low(crc)});
  return section;
}

inline Packet MakeSectionPacket(std::uint16_t pid, const Bytes& section) {
  Bytes payload = {0};  // the pointer field
  Append(payload, section);
  return MakePacket(pid, true, 0, payload, true);
}

struct PatEntry {
  std::uint16_t number;
  std::uint16_t pmt_pid;
};

inline Packet MakePat(const std::vector<PatEntry>& programs = {{1, kPmtPid}}) {
  Bytes body = {0, 1, 0xC1, 0, 0};
  for (const PatEntry& entry : programs) {
    Append(body, {High(entry.number), Low(entry.number),
                  static_cast<std::uint8_t>(0xE0 | High(entry.pmt_pid)), Low(entry.pmt_pid)});
  }
  return MakeSectionPacket(0, MakeSection(0, body));
}

struct PmtEntry {
  std::uint8_t type;
  std::uint16_t pid;
  Bytes descriptors = {};
};

inline Bytes MakePmtSection(const std::vector<PmtEntry>& streams, const Bytes& program_info = {}) {
  Bytes body = {0,
                1,
                0xC1,
                0,
                0,
                static_cast<std::uint8_t>(0xE0 | High(kVideoPid)),
                Low(kVideoPid),
                0xF0,
                Low(program_info.size())};
  Append(body, program_info);
  for (const PmtEntry& entry : streams) {
    Append(body, {entry.type, static_cast<std::uint8_t>(0xE0 | High(entry.pid)), Low(entry.pid),
                  0xF0, Low(entry.descriptors.size())});
    Append(body, entry.descriptors);
  }
  return MakeSection(2, body);
}

inline Packet MakePmt(const std::vector<PmtEntry>& streams = {{0x1B, kVideoPid}, {0x0F, kAudioPid}},
                      std::uint16_t pid = kPmtPid) {
  return MakeSectionPacket(pid, MakePmtSection(streams));
}

inline Bytes TimestampField(std::uint8_t prefix, std::uint64_t ticks) {
  return {static_cast<std::uint8_t>(std::uint64_t{prefix} << 4 | (ticks >> 30 & 7) << 1 | 1),
          Low(ticks >> 22), static_cast<std::uint8_t>((ticks >> 15 & 0x7F) << 1 | 1),
          Low(ticks >> 7), static_cast<std::uint8_t>((ticks & 0x7F) << 1 | 1)};
}

// A PES packet with a PTS, a DTS if one is given, and this payload.
inline Bytes MakePes(std::uint64_t pts, const Bytes& payload,
                     std::optional<std::uint64_t> dts = std::nullopt) {
  Bytes pes = {0,
               0,
               1,
               0xE0,
               0,
               0,
               0x80,
               static_cast<std::uint8_t>(dts ? 0xC0 : 0x80),
               static_cast<std::uint8_t>(dts ? 10 : 5)};
  Append(pes, TimestampField(dts ? 3 : 2, pts));
  if (dts) Append(pes, TimestampField(1, *dts));
  Append(pes, payload);
  return pes;
}

// The packets of a PES packet, with continuity counters starting at `counter`.
inline std::vector<Packet> Packetize(std::uint16_t pid, const Bytes& pes, int counter = 0) {
  constexpr std::size_t kPayloadSize = kTsPacketSize - 4;
  std::vector<Packet> packets;
  for (std::size_t at = 0; at < pes.size(); at += kPayloadSize) {
    const std::size_t size = std::min(kPayloadSize, pes.size() - at);
    const auto from = pes.begin() + static_cast<std::ptrdiff_t>(at);
    packets.push_back(
        MakePacket(pid, at == 0, counter++, Bytes(from, from + static_cast<std::ptrdiff_t>(size))));
  }
  return packets;
}

// A short, complete stream: PAT, PMT, and `frames` video PES packets of `video_size` bytes, each
// followed by an audio PES packet of 60 bytes. They are 40 ms apart; the first is at `first_pts`.
// All but the last of each kind are delivered as frames. Payload bytes hold the frame's number.
inline Bytes MakeStream(int frames, std::uint64_t first_pts = 90'000,
                        std::size_t video_size = 300) {
  Bytes stream;
  const auto add = [&stream](const Packet& packet) {
    stream.insert(stream.end(), packet.begin(), packet.end());
  };
  add(MakePat());
  add(MakePmt());
  int video_counter = 0;
  for (int i = 0; i < frames; ++i) {
    const std::uint64_t pts = first_pts + static_cast<std::uint64_t>(i) * 3600;
    const Bytes video(video_size, static_cast<std::uint8_t>(i));
    for (const Packet& packet : Packetize(kVideoPid, MakePes(pts, video, pts), video_counter)) {
      add(packet);
      ++video_counter;
    }
    const Bytes audio(60, static_cast<std::uint8_t>(i));
    for (const Packet& packet : Packetize(kAudioPid, MakePes(pts, audio), i)) add(packet);
  }
  return stream;
}

}  // namespace ts_test

}  // namespace stream

#endif  // TESTS_SUPPORT_TS_PACKETS_H_
