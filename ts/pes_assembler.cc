#include "ts/pes_assembler.h"

#include <algorithm>
#include <cstring>

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
  const std::uint32_t taken = std::min(size, kMaxPesPayload - length);
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
  const std::uint64_t high = (field[0] >> 1U) & 7U;
  const std::uint64_t middle = field[1] << 7U | field[2] >> 1U;
  const std::uint64_t low = field[3] << 7U | field[4] >> 1U;
  return high << 30 | middle << 15 | low;
}
