#include "common/frame_memory.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>
#include <new>

#include "common/separate_blocks.h"
#include "platform/mutex.h"
#include "platform/pages.h"

namespace stream {
namespace {

constexpr std::size_t kChunkSize = std::size_t{2} << 20;  // a large page of x86-64 and ARM
constexpr std::size_t kLargestInChunk = kChunkSize / 2;  // larger payloads get a chunk of their own
constexpr std::size_t kAlignment = alignof(std::max_align_t);

constexpr std::size_t RoundUp(std::size_t size) {
  return (size + kAlignment - 1) / kAlignment * kAlignment;
}

struct Chunk;

struct Memory {
  Mutex mutex;
  // The chunks that accept new payloads, one of each kind, or null.
  std::array<Chunk*, 2> current GUARDED_BY(mutex){};
  std::atomic<std::size_t> held{0};  // bytes
};
Memory g_memory;

// The header of every chunk. A payload begins within the first kChunkSize bytes of its chunk, and
// chunks are aligned to kChunkSize. So rounding a payload's address down gives its chunk.
struct Chunk {
  std::atomic<std::uint32_t> users{1};  // its payloads, plus 1 while it accepts more
  PayloadKind kind;
  std::size_t size;  // of the memory; needs g_memory.mutex while the chunk accepts new payloads
  std::size_t used GUARDED_BY(g_memory.mutex) = 0;  // bytes, including this header
};
constexpr std::size_t kChunkHeader = RoundUp(sizeof(Chunk));

Chunk*& CurrentOf(PayloadKind kind) REQUIRES(g_memory.mutex) {
  return g_memory.current[static_cast<std::size_t>(kind)];
}

Chunk* ChunkOf(const std::uint8_t* payload) {
  const auto address = reinterpret_cast<std::uintptr_t>(payload);
  return std::launder(reinterpret_cast<Chunk*>(address / kChunkSize * kChunkSize));  // NOLINT
}

Chunk* MakeChunk(std::size_t size, PayloadKind kind) {
  void* const memory = platform::MapPages(size, kChunkSize);
  if (memory == nullptr) return nullptr;
  platform::PrefaultPages(memory, size);
  g_memory.held += size;
  return new (memory) Chunk{.kind = kind, .size = size, .used = kChunkHeader};
}

void ReleaseChunk(Chunk* chunk) {
  const std::size_t size = chunk->size;
  g_memory.held -= size;
  platform::UnmapPages(chunk, size);
}

// Returns the number of remaining users.
std::uint32_t Leave(Chunk* chunk) {
  return chunk->users.fetch_sub(1, std::memory_order_acq_rel) - 1;
}

bool IsEmpty(const Chunk* chunk) { return chunk->users.load(std::memory_order_acquire) == 1; }

// Call it when the chunk accepts no more payloads. Releases its unused pages. The chunk itself is
// released with its last payload.
void CloseChunk(Chunk* chunk) REQUIRES(g_memory.mutex) {
  const std::size_t size = platform::TrimPages(chunk, chunk->size, chunk->used);
  g_memory.held -= chunk->size - size;
  chunk->size = size;
  if (Leave(chunk) == 0) ReleaseChunk(chunk);
}

// Ensures that the current chunk has space for `needed` bytes. Returns false if there is no memory.
bool MakeSpace(std::size_t needed, PayloadKind kind) REQUIRES(g_memory.mutex) {
  Chunk*& current = CurrentOf(kind);
  if (current != nullptr && needed <= kChunkSize - current->used) return true;
  if (current != nullptr) CloseChunk(current);
  current = MakeChunk(kChunkSize, kind);
  return current != nullptr;
}

// Refills the current chunk from its start after all its payloads have been released, so that a
// slow stream uses the same few pages. `chunk` is only compared: if it is not the current chunk,
// another thread may have released it.
void ReuseIfEmpty(const Chunk* chunk, PayloadKind kind) {
  const MutexLock lock(g_memory.mutex);
  Chunk* const current = CurrentOf(kind);
  if (chunk == current && IsEmpty(current)) current->used = kChunkHeader;
}

std::uint8_t* AllocateInChunk(std::size_t size, PayloadKind kind) {
  // At least one byte, so that a payload never begins at the end of the chunk.
  const std::size_t needed = RoundUp(std::max<std::size_t>(size, 1));
  const MutexLock lock(g_memory.mutex);
  if (!MakeSpace(needed, kind)) return nullptr;
  Chunk* const current = CurrentOf(kind);
  std::uint8_t* const payload = reinterpret_cast<std::uint8_t*>(current) + current->used;
  current->used += needed;
  current->users.fetch_add(1, std::memory_order_relaxed);
  return payload;
}

std::uint8_t* AllocateAlone(std::size_t size, PayloadKind kind) {
  if (size > std::numeric_limits<std::size_t>::max() - kChunkHeader) return nullptr;
  Chunk* const chunk = MakeChunk(size + kChunkHeader, kind);
  return chunk == nullptr ? nullptr : reinterpret_cast<std::uint8_t*>(chunk) + kChunkHeader;
}

// The header of a payload that is a heap block of its own.
struct Block {
  std::size_t size;
  PayloadKind kind;
};
constexpr std::size_t kBlockHeader = RoundUp(sizeof(Block));

Block* BlockOf(const std::uint8_t* payload) {
  return std::launder(reinterpret_cast<Block*>(const_cast<std::uint8_t*>(payload) - kBlockHeader));
}

std::uint8_t* AllocateBlock(std::size_t size, PayloadKind kind) {
  if (size > std::numeric_limits<std::size_t>::max() - kBlockHeader) return nullptr;
  void* const memory = ::operator new(size + kBlockHeader, std::nothrow);
  if (memory == nullptr) return nullptr;
  new (memory) Block{size + kBlockHeader, kind};
  g_memory.held += size + kBlockHeader;
  return static_cast<std::uint8_t*>(memory) + kBlockHeader;
}

void FreeBlock(Block* block) {
  g_memory.held -= block->size;
  ::operator delete(block);
}

void FreeInChunk(Chunk* chunk) {
  const PayloadKind kind = chunk->kind;
  const std::uint32_t users = Leave(chunk);
  if (users == 1) ReuseIfEmpty(chunk, kind);
  if (users == 0) ReleaseChunk(chunk);
}

}  // namespace

std::uint8_t* AllocatePayload(std::size_t size, PayloadKind kind) {
  if (kSeparateBlocks) return AllocateBlock(size, kind);
  return size <= kLargestInChunk ? AllocateInChunk(size, kind) : AllocateAlone(size, kind);
}

void FreePayload(std::uint8_t* payload) {
  if (payload == nullptr) return;
  if (kSeparateBlocks) {
    FreeBlock(BlockOf(payload));
  } else {
    FreeInChunk(ChunkOf(payload));
  }
}

PayloadKind KindOfPayload(const std::uint8_t* payload) {
  return kSeparateBlocks ? BlockOf(payload)->kind : ChunkOf(payload)->kind;
}

std::size_t HeldPayloadMemory() { return g_memory.held.load(); }

}  // namespace stream
