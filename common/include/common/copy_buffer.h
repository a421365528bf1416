// CopyBuffer: a growable array for building a frame or copying staged bytes. It grows to exactly
// the needed size and keeps its block when reset. It has no lock.
#ifndef COMMON_COPY_BUFFER_H_
#define COMMON_COPY_BUFFER_H_

#include <cstdint>

#include "common/large_block.h"

namespace stream {

class CopyBuffer {
 public:
  // Appends `n` bytes. Returns false and appends nothing if memory runs out or the length would
  // exceed 31 bits.
  bool Append(const std::uint8_t* bytes, std::uint32_t n);

  void Reset() { length_ = 0; }  // keeps the block
  void Release();                // releases the block

  const std::uint8_t* Data() const { return block_.get(); }
  std::int32_t Length() const { return length_; }
  std::int32_t Capacity() const { return capacity_; }

 private:
  bool Grow(std::int32_t capacity);

  LargeBlock block_;
  std::int32_t length_ = 0;
  std::int32_t capacity_ = 0;
};

}  // namespace stream

#endif  // COMMON_COPY_BUFFER_H_
