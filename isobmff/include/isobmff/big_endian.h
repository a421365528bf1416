// Reads big-endian numbers, as boxes store them, at any alignment. The caller has checked that the
// bytes are available.
#ifndef ISOBMFF_BIG_ENDIAN_H_
#define ISOBMFF_BIG_ENDIAN_H_

#include <cstdint>

namespace stream::isobmff {

inline std::uint16_t Read16(const std::uint8_t* at) {
  return static_cast<std::uint16_t>(at[0] << 8 | at[1]);
}

inline std::uint32_t Read32(const std::uint8_t* at) {
  return static_cast<std::uint32_t>(at[0]) << 24 | static_cast<std::uint32_t>(at[1]) << 16 |
         static_cast<std::uint32_t>(at[2]) << 8 | at[3];
}

inline std::uint64_t Read64(const std::uint8_t* at) {
  return static_cast<std::uint64_t>(Read32(at)) << 32 | Read32(at + 4);
}

}  // namespace stream::isobmff

#endif  // ISOBMFF_BIG_ENDIAN_H_
