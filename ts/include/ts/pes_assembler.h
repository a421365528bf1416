// Collects the payload of one PES packet (ISO/IEC 13818-1, 2.4.3.6) from the transport packets that
// carry it. Each elementary stream has its own assembler. No lock.
#ifndef TS_PES_ASSEMBLER_H_
#define TS_PES_ASSEMBLER_H_

#include <array>
#include <cstdint>

namespace stream {

inline constexpr std::uint32_t kMaxPesPayload = 1'048'576;

using PesBuffer = std::array<std::uint8_t, kMaxPesPayload>;

struct pes_assembler {
  PesBuffer& buffer;          // borrowed from the demultiplexer
  std::uint32_t length = 0;   // bytes of the PES packet in progress
  std::uint64_t pts = 0;      // 90 kHz, of the PES packet in progress
  std::uint64_t dts = 0;      // 90 kHz, of the PES packet in progress
  std::uint32_t cc_ok = 1;    // 1 if the latest packet was in sequence
  std::int32_t last_cc = -1;  // last accepted continuity counter, -1 for none
  std::uint32_t intact = 1;   // 1 while the PES packet in progress has no gap and was not cut

  // Drops the PES packet in progress. The state is that of a new assembler.
  void Reset();

  // Starts a PES packet with its first payload bytes.
  void Begin(std::uint64_t new_pts, std::uint64_t new_dts, const std::uint8_t* bytes,
             std::uint32_t size);

  // Appends payload bytes. Bytes after kMaxPesPayload are dropped, and `intact` is cleared.
  void Append(const std::uint8_t* bytes, std::uint32_t size);

  // Compares a packet's continuity counter with the last accepted one. A gap clears `intact` and is
  // not repaired. While `intact` is clear, no counter is accepted.
  void CheckContinuity(std::int32_t continuity_counter);
};

// Decodes the 33-bit timestamp in the five bytes of a PTS or DTS field. Does not check marker bits.
std::uint64_t get_pes_timestamp(const std::array<std::uint8_t, 5>& field);

}  // namespace stream

#endif  // TS_PES_ASSEMBLER_H_
