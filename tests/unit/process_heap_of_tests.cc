// Replaces the heap of the process on systems where the library does not use it.
#include <cstdlib>

#include "msvc/process_heap.h"

namespace msvc {

void* AllocateFromProcessHeap(std::size_t size) { return std::malloc(size); }

void ReleaseToProcessHeap(void* block) { std::free(block); }

}  // namespace msvc
