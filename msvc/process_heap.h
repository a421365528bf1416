// The heap of the process, from which a Visual C++ run-time library takes the memory of operator
// new, whether it is linked statically (/MT) or as a DLL (/MD). Strings that cross the boundary are
// allocated by one side and released by the other, so both have to use this heap.
#ifndef MSVC_PROCESS_HEAP_H_
#define MSVC_PROCESS_HEAP_H_

#include <cstddef>

namespace msvc {

// Null when there is no memory.
void* AllocateFromProcessHeap(std::size_t size);

// Releases a block of that heap, whichever side allocated it.
void ReleaseToProcessHeap(void* block);

}  // namespace msvc

#endif  // MSVC_PROCESS_HEAP_H_
