// The functions of Windows that this host uses. They are declared here because the system's headers
// are not available.
#ifndef TESTS_MSVC_SYSTEM_H_
#define TESTS_MSVC_SYSTEM_H_

#include <cstddef>
#include <cstdint>

extern "C" {

// At least as large as what HeapWalk fills in.
struct HeapEntry {
  void* data;
  std::uint32_t size;
  unsigned char overhead;
  unsigned char region;
  unsigned short flags;
  std::uint64_t rest[4];
};

__declspec(dllimport) void* GetProcessHeap();
__declspec(dllimport) void* HeapAlloc(void* heap, std::uint32_t flags, std::size_t size);
__declspec(dllimport) int HeapFree(void* heap, std::uint32_t flags, void* block);
__declspec(dllimport) int HeapValidate(void* heap, std::uint32_t flags, const void* block);
__declspec(dllimport) int HeapWalk(void* heap, HeapEntry* entry);
__declspec(dllimport) int HeapLock(void* heap);
__declspec(dllimport) int HeapUnlock(void* heap);
__declspec(dllimport) char* GetCommandLineA();
__declspec(dllimport) void* GetStdHandle(std::uint32_t kind);
__declspec(dllimport) int WriteFile(void* file, const void* bytes, std::uint32_t size,
                                    std::uint32_t* written, void* overlapped);
__declspec(dllimport) void* LoadLibraryA(const char* name);
__declspec(dllimport) void* GetModuleHandleA(const char* name);
__declspec(dllimport) void* GetProcAddress(void* module, const char* name);
__declspec(dllimport) void AcquireSRWLockExclusive(void** lock);
__declspec(dllimport) void ReleaseSRWLockExclusive(void** lock);
__declspec(dllimport) void Sleep(std::uint32_t milliseconds);
__declspec(dllimport) int VirtualProtect(void* memory, std::size_t size, std::uint32_t protection,
                                         std::uint32_t* before);
[[noreturn]] __declspec(dllimport) void ExitProcess(std::uint32_t code);

}  // extern "C"

#endif  // TESTS_MSVC_SYSTEM_H_
