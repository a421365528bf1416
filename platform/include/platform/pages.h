// Memory directly from the system, in whole pages.
#ifndef PLATFORM_PAGES_H_
#define PLATFORM_PAGES_H_

#include <cstddef>

namespace stream::platform {

// Asks the system to provide all pages of fresh memory now, as large pages if possible, instead of
// one page at each first touch. Only a hint: does nothing if the system cannot.
void PrefaultPages(void* memory, std::size_t size);

// Allocates memory directly from the system: `size` bytes, rounded up to whole pages, at a multiple
// of `alignment`, which is a power of two. Returns null if there is none. Released memory returns
// to the system at once, which the heap does not guarantee.
void* MapPages(std::size_t size, std::size_t alignment);

// Releases memory of this size that MapPages returned, or that TrimPages left.
void UnmapPages(void* memory, std::size_t size);

// Releases the whole pages after the first `used` bytes. Returns the remaining size.
std::size_t TrimPages(void* memory, std::size_t size, std::size_t used);

// Releases the whole pages of such memory but keeps the addresses. Bytes that are read there before
// the next write are undefined. Only a hint.
void DiscardPages(void* memory, std::size_t size);

}  // namespace stream::platform

#endif  // PLATFORM_PAGES_H_
