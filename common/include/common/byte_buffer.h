// CByteBuffer: a growable staging buffer. The write callback of a transfer appends to it, and a
// parse thread consumes from its front.
//
// The buffer has no lock: threads that share one guard it with a mutex of their own. It owns its
// memory.
//
// The buffer behaves as one array with a read and a write position that is compacted or grown at
// every Reserve, and its members have exactly the values of such an array. Kept for compatibility.
// The bytes are moved far less often: `data` is a window into a larger block. Compaction moves the
// window instead of the bytes, and growth widens it. So appending a byte has a constant cost,
// however many bytes are unread. The consumed part of a large block holds no memory: after a large
// backlog has been parsed, at most 4 MiB stay allocated.
#ifndef COMMON_BYTE_BUFFER_H_
#define COMMON_BYTE_BUFFER_H_

#include <cstdint>

#include "common/large_block.h"

namespace stream {

// Status codes of the buffer's operations. The values are the Windows HRESULTs with these meanings.
inline constexpr std::uint32_t kBufferOk = 0;
inline constexpr std::uint32_t kBufferOutOfMemory = 0x8007000E;

inline constexpr std::uint32_t kBufferImpossible =
    0x8000FFFF;  // an overflow or a move past the end

class CByteBuffer {
 public:
  CByteBuffer() = default;
  CByteBuffer(const CByteBuffer&) = delete;
  CByteBuffer& operator=(const CByteBuffer&) = delete;

  // Allocates the first 4096 bytes. Does nothing if the buffer has an array already.
  std::uint32_t Initialize();

  // Ensures space for `n` more bytes at WritePtr(). Invalidates pointers into the buffer.
  std::uint32_t Reserve(std::uint32_t n);

  // Commits `n` bytes that were written at WritePtr().
  std::uint32_t MoveEnd(std::uint32_t n);

  // Consumes `n` bytes from the front.
  std::uint32_t MoveStart(std::uint32_t n);

  // Reserve, copy and MoveEnd in one step. On failure nothing is appended.
  std::uint32_t Append(const void* bytes, std::uint32_t n);

  // Discards the contents and keeps the array.
  void Reset();

  // Exchanges arrays and contents with `other`. No byte is moved, so pointers into an array stay
  // valid.
  void Swap(CByteBuffer& other) noexcept;

  std::uint32_t Size() const { return writePos - readPos; }  // unread bytes
  std::uint8_t* ReadPtr() const { return data + readPos; }
  // Equal to ReadPtr, except between a Reserve that moved the bytes and the next MoveEnd. Kept for
  // compatibility.
  std::uint8_t* ContinuePtr() const { return data + readPos + pendingShift; }
  std::uint8_t* WritePtr() const { return data + writePos; }

  std::uint32_t Capacity() const { return capacity; }
  std::uint32_t PendingShift() const { return pendingShift; }
  std::uint32_t ReadPos() const { return readPos; }
  std::uint32_t WritePos() const { return writePos; }

 private:
  bool FitsInBlock(std::uint64_t window_start, std::uint32_t window_size) const;
  void PlaceUnreadAt(std::uint8_t* target, std::uint32_t new_capacity);
  bool Reallocate(std::uint32_t new_capacity);
  std::uint64_t OffsetInBlock(std::uint32_t position) const;
  void MoveWindowToStart(std::uint32_t new_capacity);
  void DiscardConsumed();
  bool IsLarge() const;

  // readPos <= writePos <= capacity. The window [data, data + capacity) is within the block.
  std::uint8_t* data = nullptr;
  std::uint32_t capacity = 0;
  std::uint32_t pendingShift = 0;
  std::uint32_t readPos = 0;
  std::uint32_t writePos = 0;

  LargeBlock block_;
  std::uint64_t block_size_ = 0;
  std::uint64_t discarded_ = 0;  // bytes at the beginning of the block that hold no memory
};

}  // namespace stream

#endif  // COMMON_BYTE_BUFFER_H_
