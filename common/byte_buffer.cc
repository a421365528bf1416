#include "common/byte_buffer.h"

#include <cstring>
#include <limits>
#include <new>
#include <utility>

namespace {

constexpr std::uint32_t kSlack =
    4096;  // room beyond what is needed, at the start and at each growth
constexpr std::uint32_t kMax = std::numeric_limits<std::uint32_t>::max();

std::unique_ptr<std::uint8_t[]> Allocate(std::uint64_t size) {
  return std::unique_ptr<std::uint8_t[]>(new (std::nothrow) std::uint8_t[size]);
}

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
  const auto window_start = static_cast<std::uint64_t>(data - block_.get()) + readPos;
  if (data != nullptr && FitsInBlock(window_start, wanted)) {
    PlaceUnreadAt(ReadPtr(), wanted);  // the window moves, the bytes stay
  } else if (block_size_ / 2 >= wanted || !Reallocate(wanted)) {
    if (block_size_ < wanted) return kBufferOutOfMemory;
    PlaceUnreadAt(block_.get(), wanted);  // rare: at least half the block was consumed since
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
  return kBufferOk;
}

std::uint32_t CByteBuffer::Append(const void* bytes, std::uint32_t n) {
  if (n == 0) return kBufferOk;
  if (const std::uint32_t status = Reserve(n); status != kBufferOk) return status;
  std::memcpy(WritePtr(), bytes, n);
  return MoveEnd(n);
}

void CByteBuffer::Reset() {
  readPos = 0;
  writePos = 0;
  pendingShift = 0;
}

bool CByteBuffer::FitsInBlock(std::uint64_t window_start, std::uint32_t window_size) const {
  return window_start + window_size <= block_size_;
}

// Makes `target`, in the present block, the start of the window, with the unread bytes in front.
void CByteBuffer::PlaceUnreadAt(std::uint8_t* target, std::uint32_t new_capacity) {
  const std::uint32_t unread = Size();
  if (target != ReadPtr()) std::memmove(target, ReadPtr(), unread);
  data = target;
  capacity = new_capacity;
  pendingShift = unread;
  readPos = 0;
  writePos = unread;
}

// Moves the unread bytes to a block twice as large as the window, so that the window can move and
// grow for as many bytes as it holds before they are copied again. Where memory is too short for
// that, a block of just the window's size will do, if the present one is smaller.
bool CByteBuffer::Reallocate(std::uint32_t new_capacity) {
  std::uint64_t size = std::uint64_t{new_capacity} * 2;
  auto block = Allocate(size);
  if (block == nullptr && block_size_ < new_capacity) {
    size = new_capacity;
    block = Allocate(size);
  }
  if (block == nullptr) return false;
  const std::uint32_t unread = Size();
  if (unread != 0) std::memcpy(block.get(), ReadPtr(), unread);
  block_ = std::move(block);
  block_size_ = size;
  data = block_.get();
  capacity = new_capacity;
  pendingShift = unread;
  readPos = 0;
  writePos = unread;
  return true;
}
