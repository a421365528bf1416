#include "ts/ts_crc32.h"

namespace stream {

std::uint32_t ts_crc32(const std::uint8_t* bytes, std::uint16_t length) {
  constexpr std::uint32_t kPolynomial = 0x04C11DB7;
  constexpr std::uint32_t kTopBit = 0x80000000;
  std::uint32_t crc = 0xFFFFFFFF;
  for (std::uint16_t i = 0; i < length; ++i) {
    crc ^= std::uint32_t{bytes[i]} << 24;
    for (int bit = 0; bit < 8; ++bit) crc = (crc << 1) ^ ((crc & kTopBit) != 0 ? kPolynomial : 0);
  }
  return crc;
}

}  // namespace stream
