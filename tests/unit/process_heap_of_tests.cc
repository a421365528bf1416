// Replaces the heap of the process on systems where the library does not use it.
#include <cstdlib>

#include "platform/process_heap.h"

namespace stream {

namespace platform {

void* AllocateFromProcessHeap(std::size_t size) { return std::malloc(size); }

void ReleaseToProcessHeap(void* block) { std::free(block); }

}  // namespace platform

}  // namespace stream
