// Writes numbers into a byte array bit by bit, most significant bit first.
#ifndef COMMON_BIT_WRITER_H_
#define COMMON_BIT_WRITER_H_

#include <cstddef>
#include <cstdint>
#include <span>

namespace stream {

// Bits are set but never cleared, so the array must be zeroed first. Bits after its end are
// dropped.
class BitWriter {
 public:
  explicit BitWriter(std::span<std::uint8_t> bytes) : bytes_(bytes) {}

  // Appends the low `count` bits of `value`. `count` is at most 16.
  void Write(unsigned count, std::uint16_t value);

 private:
  std::span<std::uint8_t> bytes_;
  std::size_t position_ = 0;  // in bits
};

}  // namespace stream

#endif  // COMMON_BIT_WRITER_H_
