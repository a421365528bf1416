#include <windows.h>

#include <cstddef>

#include "platform/pages.h"
#include "round_up.h"

namespace stream::platform {
namespace {

constexpr std::size_t kPageSize = 4096;  // of every 64-bit Windows

void* MapAt(void* address, std::size_t size, DWORD kind) {
  return VirtualAlloc(address, size, kind, PAGE_READWRITE);
}

}  // namespace

void PrefaultPages(void* /*memory*/, std::size_t /*size*/) {}

// Reserves more than needed to find an aligned address, and releases it. Another thread may take
// that address before it is reserved again, so there are several attempts.
void* MapPages(std::size_t size, std::size_t alignment) {
  constexpr int kAttempts = 16;
  if (size + alignment < size) return nullptr;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    void* const larger = MapAt(nullptr, size + alignment, MEM_RESERVE);
    if (larger == nullptr) return nullptr;
    const std::size_t address = RoundUp(reinterpret_cast<std::size_t>(larger), alignment);
    VirtualFree(larger, 0, MEM_RELEASE);
    void* const memory =
        MapAt(reinterpret_cast<void*>(address), size, MEM_RESERVE | MEM_COMMIT);  // NOLINT
    if (memory != nullptr) return memory;
  }
  return nullptr;
}

void UnmapPages(void* memory, std::size_t /*size*/) { VirtualFree(memory, 0, MEM_RELEASE); }

std::size_t TrimPages(void* memory, std::size_t size, std::size_t used) {
  const std::size_t kept = RoundUp(used, kPageSize);
  const std::size_t mapped = RoundUp(size, kPageSize);
  if (kept >= mapped) return mapped;
  VirtualFree(static_cast<char*>(memory) + kept, mapped - kept, MEM_DECOMMIT);
  return kept;
}

// MEM_RESET keeps pages from being written to the paging file. VirtualUnlock of pages that are not
// locked removes them from the working set.
void DiscardPages(void* memory, std::size_t size) {
  const std::size_t address = reinterpret_cast<std::size_t>(memory);
  const std::size_t skipped = RoundUp(address, kPageSize) - address;
  if (size < skipped + kPageSize) return;
  void* const begin = static_cast<char*>(memory) + skipped;
  const std::size_t length = (size - skipped) / kPageSize * kPageSize;
  VirtualAlloc(begin, length, MEM_RESET, PAGE_READWRITE);
  VirtualUnlock(begin, length);
}

}  // namespace stream::platform
