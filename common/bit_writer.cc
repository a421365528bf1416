#include "common/bit_writer.h"

#include <cstddef>

namespace stream {

void BitWriter::Write(unsigned count, std::uint16_t value) {
  for (unsigned left = count; left > 0; --left, ++position_) {
    const std::size_t byte = position_ / 8;
    if (byte >= bytes_.size()) continue;
    const unsigned bit = value >> (left - 1) & 1U;
    bytes_[byte] = static_cast<std::uint8_t>(bytes_[byte] | bit << (7 - position_ % 8));
  }
}

}  // namespace stream
