// The process heap; Windows only. The run-time library of Visual C++ allocates the memory of
// operator new there, whether it is linked statically (/MT) or as a DLL (/MD). A string that
// crosses the boundary is allocated by one side and released by the other, so both have to use this
// heap.
#ifndef PLATFORM_PROCESS_HEAP_H_
#define PLATFORM_PROCESS_HEAP_H_

#include <cstddef>

namespace stream::platform {

// Returns null if there is no memory.
void* AllocateFromProcessHeap(std::size_t size);

// Releases a block of that heap, whichever side allocated it.
void ReleaseToProcessHeap(void* block);

}  // namespace stream::platform

#endif  // PLATFORM_PROCESS_HEAP_H_
