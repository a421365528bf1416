#include "common/frame_memory.h"

#include <array>
#include <atomic>
#include <mutex>
#include <new>
#include <utility>

#include "common/platform.h"

// The address sanitizer is to see each payload as a block of its own, its end and its leak.
#if defined(__SANITIZE_ADDRESS__)
#define STREAM_ONE_BLOCK_A_PAYLOAD 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define STREAM_ONE_BLOCK_A_PAYLOAD 1
#endif
#endif

namespace {

#ifdef STREAM_ONE_BLOCK_A_PAYLOAD
constexpr bool kOneBlockAPayload = true;
#else
constexpr bool kOneBlockAPayload = false;
#endif

constexpr std::size_t kChunkSize = std::size_t{2} << 20;  // a large page of x86-64 and ARM
constexpr std::size_t kLargestInChunk = kChunkSize / 16;  // what is larger is a block of its own
constexpr std::size_t kAlignment = alignof(std::max_align_t);

constexpr std::size_t RoundUp(std::size_t size) {
  return (size + kAlignment - 1) / kAlignment * kAlignment;
}

struct Chunk {
  std::atomic<std::uint32_t> users{1};  // the payloads in it, and one while new ones go there
  std::size_t used = 0;                 // bytes, this header included; guarded by g_mutex
};
constexpr std::size_t kChunkHeader = RoundUp(sizeof(Chunk));

// In front of every payload: where it came from, null for a block of its own.
struct Owner {
  Chunk* chunk = nullptr;
};
constexpr std::size_t kOwner = RoundUp(sizeof(Owner));

std::mutex g_mutex;
Chunk* g_current = nullptr;       // guarded by g_mutex
std::array<Chunk*, 2> g_spare{};  // empty ones, or null; guarded by g_mutex

Chunk* MakeChunk() {
  void* const memory = ::operator new (kChunkSize, std::align_val_t{kChunkSize}, std::nothrow);
  if (memory == nullptr) return nullptr;
  platform::BringIntoMemory(memory, kChunkSize);
  return new (memory) Chunk;
}

// With g_mutex held.
Chunk* TakeSpareOrMake() {
  for (Chunk*& spare : g_spare) {
    if (spare != nullptr) return std::exchange(spare, nullptr);
  }
  return MakeChunk();
}

// With g_mutex held.
void KeepOrRelease(Chunk* chunk) {
  for (Chunk*& spare : g_spare) {
    if (spare == nullptr) {
      spare = chunk;
      return;
    }
  }
  ::operator delete (chunk, std::align_val_t{kChunkSize});
}

// True when nobody uses the chunk any more.
bool Leave(Chunk* chunk) { return chunk->users.fetch_sub(1, std::memory_order_acq_rel) == 1; }

// Begins the current chunk anew when all its payloads are gone, else another one. With g_mutex
// held.
bool BeginChunk() {
  const bool is_empty =
      g_current != nullptr && g_current->users.load(std::memory_order_acquire) == 1;
  if (!is_empty) {
    if (g_current != nullptr && Leave(g_current)) KeepOrRelease(g_current);
    g_current = TakeSpareOrMake();
    if (g_current == nullptr) return false;
    g_current->users.store(1, std::memory_order_relaxed);
  }
  g_current->used = kChunkHeader;
  return true;
}

std::uint8_t* Place(void* at, Chunk* chunk) {
  new (at) Owner{chunk};
  return static_cast<std::uint8_t*>(at) + kOwner;
}

std::uint8_t* AllocateInChunk(std::size_t needed) {
  const std::lock_guard lock(g_mutex);
  const bool fits = g_current != nullptr && needed <= kChunkSize - g_current->used;
  if (!fits && !BeginChunk()) return nullptr;
  void* const at = reinterpret_cast<std::uint8_t*>(g_current) + g_current->used;
  g_current->used += needed;
  g_current->users.fetch_add(1, std::memory_order_relaxed);
  return Place(at, g_current);
}

}  // namespace

std::uint8_t* AllocatePayload(std::size_t size) {
  if (!kOneBlockAPayload && size <= kLargestInChunk) return AllocateInChunk(RoundUp(size) + kOwner);
  void* const block = ::operator new(size + kOwner, std::nothrow);
  return block == nullptr ? nullptr : Place(block, nullptr);
}

void FreePayload(std::uint8_t* payload) {
  if (payload == nullptr) return;
  std::uint8_t* const at = payload - kOwner;
  Chunk* const chunk = std::launder(reinterpret_cast<Owner*>(at))->chunk;
  if (chunk == nullptr) {
    ::operator delete(at);
  } else if (Leave(chunk)) {
    const std::lock_guard lock(g_mutex);
    KeepOrRelease(chunk);
  }
}
