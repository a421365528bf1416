#include "common/copy_buffer.h"

#include <cstring>
#include <limits>
#include <utility>

namespace stream {

bool CopyBuffer::Append(const std::uint8_t* bytes, std::uint32_t n) {
  constexpr auto kMaxLength = static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
  if (n == 0) return true;
  if (n > kMaxLength - static_cast<std::uint32_t>(length_)) return false;
  const std::int32_t needed = length_ + static_cast<std::int32_t>(n);
  if (needed > capacity_ && !Grow(needed)) return false;
  std::memcpy(block_.get() + length_, bytes, n);
  length_ = needed;
  return true;
}

void CopyBuffer::Release() {
  block_.reset();
  length_ = 0;
  capacity_ = 0;
}

bool CopyBuffer::Grow(std::int32_t capacity) {
  LargeBlock block = AllocateLargeBlock(static_cast<std::size_t>(capacity));
  if (block == nullptr) return false;
  if (length_ != 0) std::memcpy(block.get(), block_.get(), static_cast<std::size_t>(length_));
  block_ = std::move(block);
  capacity_ = capacity;
  return true;
}

}  // namespace stream
