#include "ts/pes_assembler.h"

#include <algorithm>
#include <cstring>

namespace stream {
namespace {

// The payload size of a packet without an adaptation field. Nearly all packets have none, and
// copying a constant number of bytes is several times faster.
constexpr std::uint32_t kFullPayload = 184;

}  // namespace

void pes_assembler::Reset() {
  length = 0;
  pts = 0;
  dts = 0;
  cc_ok = 1;
  last_cc = -1;
  intact = 1;
}

void pes_assembler::Begin(std::uint64_t new_pts, std::uint64_t new_dts, const std::uint8_t* bytes,
                          std::uint32_t size) {
  pts = new_pts;
  dts = new_dts;
  length = 0;
  last_cc = -1;
  intact = 1;
  Append(bytes, size);
}

void pes_assembler::Append(const std::uint8_t* bytes, std::uint32_t size) {
  const std::uint32_t space = kMaxPesPayload - length;
  if (size == kFullPayload && space >= kFullPayload) {
    std::memcpy(buffer.data() + length, bytes, kFullPayload);
    length += kFullPayload;
    return;
  }
  const std::uint32_t taken = std::min(size, space);
  std::memcpy(buffer.data() + length, bytes, taken);
  length += taken;
  if (taken < size) intact = 0;
}

void pes_assembler::CheckContinuity(std::int32_t continuity_counter) {
  cc_ok = last_cc < 0 || ((last_cc + 1) & 15) == continuity_counter ? 1 : 0;
  if (cc_ok == 0) intact = 0;
  if (intact == 1) last_cc = continuity_counter;
}

std::uint64_t get_pes_timestamp(const std::array<std::uint8_t, 5>& field) {
  const std::uint32_t high = (std::uint32_t{field[0]} >> 1) & 7;
  const std::uint32_t middle = std::uint32_t{field[1]} << 7 | std::uint32_t{field[2]} >> 1;
  const std::uint32_t low = std::uint32_t{field[3]} << 7 | std::uint32_t{field[4]} >> 1;
  return std::uint64_t{high} << 30 | std::uint64_t{middle} << 15 | low;
}

}  // namespace stream
