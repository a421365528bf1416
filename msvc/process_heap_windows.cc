#include <windows.h>

#include "msvc/process_heap.h"

namespace msvc {

void* AllocateFromProcessHeap(std::size_t size) { return HeapAlloc(GetProcessHeap(), 0, size); }

void ReleaseToProcessHeap(void* block) { HeapFree(GetProcessHeap(), 0, block); }

}  // namespace msvc
