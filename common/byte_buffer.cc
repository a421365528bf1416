#include "common/byte_buffer.h"

#include <cstring>
#include <limits>
#include <utility>

namespace stream {
namespace {

constexpr std::uint32_t kSlack = 4096;  // extra capacity, at the start and at each growth
constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();

// A block of at most this size keeps the memory of consumed bytes and reuses it.
constexpr std::uint64_t kSmallBlock = std::uint64_t{4} << 20;

}  // namespace

std::uint32_t CByteBuffer::Initialize() {
  if (data != nullptr) return kBufferOk;
  return Reallocate(kSlack) ? kBufferOk : kBufferOutOfMemory;
}

std::uint32_t CByteBuffer::Reserve(std::uint32_t n) {
  if (n == 0) return kBufferOk;
  if (n > kMax - capacity) return kBufferImpossible;
  const std::uint32_t unread = Size();
  std::uint32_t wanted = capacity;
  if (n > capacity - unread) {
    const std::uint64_t grown = std::uint64_t{n} + unread + kSlack;
    if (grown > kMax) return kBufferImpossible;
    wanted = static_cast<std::uint32_t>(grown);
  }
  if (data != nullptr && FitsInBlock(OffsetInBlock(readPos), wanted)) {
    PlaceUnreadAt(ReadPtr(), wanted);  // moves the window, not the bytes
  } else if (block_size_ / 2 >= wanted || !Reallocate(wanted)) {
    if (block_size_ < wanted) return kBufferOutOfMemory;
    MoveWindowToStart(wanted);  // rare: half of the block is consumed, or memory is short
  }
  return kBufferOk;
}

std::uint32_t CByteBuffer::MoveEnd(std::uint32_t n) {
  if (n == 0) return kBufferOk;
  if (n > capacity - writePos) return kBufferImpossible;
  writePos += n;
  pendingShift = 0;
  return kBufferOk;
}

std::uint32_t CByteBuffer::MoveStart(std::uint32_t n) {
  if (n == 0) return kBufferOk;
  if (n > writePos - readPos) return kBufferImpossible;
  readPos += n;
  DiscardConsumed();
  return kBufferOk;
}

std::uint32_t CByteBuffer::Append(const void* bytes, std::uint32_t n) {
  if (n == 0) return kBufferOk;
  if (const std::uint32_t status = Reserve(n); status != kBufferOk) return status;
  std::memcpy(WritePtr(), bytes, n);
  return MoveEnd(n);
}

void CByteBuffer::Reset() {
  if (IsLarge()) DiscardPartOf(block_, discarded_, OffsetInBlock(writePos));
  discarded_ = 0;  // later writes fill the discarded memory again
  readPos = 0;
  writePos = 0;
  pendingShift = 0;
}

void CByteBuffer::Swap(CByteBuffer& other) noexcept {
  std::swap(data, other.data);
  std::swap(capacity, other.capacity);
  std::swap(pendingShift, other.pendingShift);
  std::swap(readPos, other.readPos);
  std::swap(writePos, other.writePos);
  std::swap(block_, other.block_);
  std::swap(block_size_, other.block_size_);
  std::swap(discarded_, other.discarded_);
}

bool CByteBuffer::IsLarge() const { return block_size_ > kSmallBlock; }

std::uint64_t CByteBuffer::OffsetInBlock(std::uint32_t position) const {
  return static_cast<std::uint64_t>(data - block_.get()) + position;
}

// Discards whole large pages only, so that the system does not split one.
void CByteBuffer::DiscardConsumed() {
  if (!IsLarge()) return;
  const std::uint64_t consumed = OffsetInBlock(readPos) / kLargePage * kLargePage;
  if (consumed <= discarded_) return;
  DiscardPartOf(block_, discarded_, consumed);
  discarded_ = consumed;
}

bool CByteBuffer::FitsInBlock(std::uint64_t window_start, std::uint32_t window_size) const {
  return window_start + window_size <= block_size_;
}

// Moves the window to `target`, an address in the current block, and the unread bytes to its start.
void CByteBuffer::PlaceUnreadAt(std::uint8_t* target, std::uint32_t new_capacity) {
  const std::uint32_t unread = Size();
  if (target != ReadPtr()) std::memmove(target, ReadPtr(), unread);
  data = target;
  capacity = new_capacity;
  pendingShift = unread;
  readPos = 0;
  writePos = unread;
}

void CByteBuffer::MoveWindowToStart(std::uint32_t new_capacity) {
  const std::uint64_t end = OffsetInBlock(writePos);
  PlaceUnreadAt(block_.get(), new_capacity);
  discarded_ = 0;
  if (IsLarge()) DiscardPartOf(block_, writePos, end);
}

// Moves the unread bytes to a new block. The block is twice as large as the window, so that the
// window can move and grow by its own size before bytes are copied again. If memory is short, a
// block of the window's size is allocated, provided that the current block is smaller.
bool CByteBuffer::Reallocate(std::uint32_t new_capacity) {
  std::uint64_t size = std::uint64_t{new_capacity} * 2;
  LargeBlock block = AllocateLargeBlock(size);
  if (block == nullptr && block_size_ < new_capacity) {
    size = new_capacity;
    block = AllocateLargeBlock(size);
  }
  if (block == nullptr) return false;
  const std::uint32_t unread = Size();
  if (unread != 0) std::memcpy(block.get(), ReadPtr(), unread);
  block_ = std::move(block);
  block_size_ = size;
  discarded_ = 0;
  data = block_.get();
  capacity = new_capacity;
  pendingShift = unread;
  readPos = 0;
  writePos = unread;
  return true;
}

}  // namespace stream
