// The checksum of PSI sections.
#ifndef TS_TS_CRC32_H_
#define TS_TS_CRC32_H_

#include <cstdint>

namespace stream {

// CRC-32/MPEG-2 (ISO/IEC 13818-1, Annex A): polynomial 0x04C11DB7, initial value all ones, most
// significant bit first, no reflection and no final inversion.
std::uint32_t ts_crc32(const std::uint8_t* bytes, std::uint16_t length);

}  // namespace stream

#endif  // TS_TS_CRC32_H_
