#include <windows.h>

#include "platform/process_heap.h"

namespace stream::platform {

void* AllocateFromProcessHeap(std::size_t size) { return HeapAlloc(GetProcessHeap(), 0, size); }

void ReleaseToProcessHeap(void* block) { HeapFree(GetProcessHeap(), 0, block); }

}  // namespace stream::platform
