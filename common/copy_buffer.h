// CopyBuffer: a growable array for building a frame or taking a private copy of staged bytes. It
// grows to exactly the needed size and keeps its block when reset. It has no lock.
#ifndef COMMON_COPY_BUFFER_H_
#define COMMON_COPY_BUFFER_H_

#include <cstdint>

#include "common/large_block.h"

class CopyBuffer {
 public:
  // Appends `n` bytes. False, and nothing appended, when memory runs out or the length would not
  // fit in 31 bits.
  bool Append(const std::uint8_t* bytes, std::uint32_t n);

  void Reset() { length_ = 0; }  // keeps the block
  void Release();                // gives the block back

  const std::uint8_t* Data() const { return block_.get(); }
  std::int32_t Length() const { return length_; }
  std::int32_t Capacity() const { return capacity_; }

 private:
  bool Grow(std::int32_t capacity);

  LargeBlock block_;
  std::int32_t length_ = 0;
  std::int32_t capacity_ = 0;
};

#endif  // COMMON_COPY_BUFFER_H_
