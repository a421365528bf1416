#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>

#include "platform/pages.h"
#include "round_up.h"

namespace stream::platform {
namespace {

std::size_t PageSize() {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

// The whole pages within a range of memory.
struct PageRange {
  PageRange(void* memory, std::size_t size) {
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const std::size_t skipped = RoundUp(address, PageSize()) - address;
    if (size < skipped + PageSize()) return;
    begin = static_cast<std::uint8_t*>(memory) + skipped;
    length = (size - skipped) / PageSize() * PageSize();
  }

  std::uint8_t* begin = nullptr;
  std::size_t length = 0;
};

}  // namespace

void PrefaultPages(void* memory, std::size_t size) {
  [[maybe_unused]] const PageRange pages(memory, size);
#ifdef MADV_HUGEPAGE
  madvise(pages.begin, pages.length, MADV_HUGEPAGE);
#endif
#ifdef MADV_POPULATE_WRITE
  madvise(pages.begin, pages.length, MADV_POPULATE_WRITE);
#endif
}

// Maps more than needed and unmaps the parts before and after the aligned range.
void* MapPages(std::size_t size, std::size_t alignment) {
  const std::size_t kept = RoundUp(size, PageSize());
  const std::size_t mapped = kept + RoundUp(alignment, PageSize()) - PageSize();
  if (kept < size || mapped < kept) return nullptr;
  void* const memory =
      mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  auto* const begin = static_cast<std::uint8_t*>(memory);
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  const std::size_t skipped = RoundUp(address, alignment) - address;
  const std::size_t after = mapped - skipped - kept;
  if (skipped != 0) munmap(begin, skipped);
  if (after != 0) munmap(begin + skipped + kept, after);
  return begin + skipped;
}

void UnmapPages(void* memory, std::size_t size) { munmap(memory, RoundUp(size, PageSize())); }

std::size_t TrimPages(void* memory, std::size_t size, std::size_t used) {
  const std::size_t kept = RoundUp(used, PageSize());
  const std::size_t mapped = RoundUp(size, PageSize());
  if (kept >= mapped) return mapped;
  munmap(static_cast<std::uint8_t*>(memory) + kept, mapped - kept);
  return kept;
}

void DiscardPages(void* memory, std::size_t size) {
  const PageRange pages(memory, size);
  if (pages.length != 0) madvise(pages.begin, pages.length, MADV_DONTNEED);
}

}  // namespace stream::platform
