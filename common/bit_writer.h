// Writes numbers into a byte array bit by bit, most significant bit first.
#ifndef COMMON_BIT_WRITER_H_
#define COMMON_BIT_WRITER_H_

#include <cstddef>
#include <cstdint>
#include <span>

// Bits are only ever set, never cleared: the array has to be zeroed before. What would lie behind
// its end is dropped.
class BitWriter {
 public:
  explicit BitWriter(std::span<std::uint8_t> bytes) : bytes_(bytes) {}

  // Appends the low `count` bits of `value`; 16 at most.
  void Write(unsigned count, std::uint16_t value);

 private:
  std::span<std::uint8_t> bytes_;
  std::size_t position_ = 0;  // in bits
};

#endif  // COMMON_BIT_WRITER_H_
