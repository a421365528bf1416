// Replaces the run-time library of a compiler: memory from the heap of the process, the functions
// that the compiler itself calls, and the entry point.
#include <cstddef>
#include <new>

#include "report.h"
#include "system.h"

int Main(const char* arguments);

extern "C" {

int _fltused = 1;  // the linker requires it if floats are used

// Without no_builtin the compiler replaces the loop with a call of the function itself.
__attribute__((no_builtin)) void* memcpy(void* to, const void* from, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) {
    static_cast<char*>(to)[i] = static_cast<const char*>(from)[i];
  }
  return to;
}

__attribute__((no_builtin)) void* memset(void* to, int value, std::size_t size) {
  for (std::size_t i = 0; i < size; ++i) static_cast<char*>(to)[i] = static_cast<char>(value);
  return to;
}

__attribute__((no_builtin)) int memcmp(const void* left, const void* right, std::size_t size) {
  const auto* const a = static_cast<const unsigned char*>(left);
  const auto* const b = static_cast<const unsigned char*>(right);
  for (std::size_t i = 0; i < size; ++i) {
    if (a[i] != b[i]) return a[i] - b[i];
  }
  return 0;
}

__attribute__((no_builtin)) std::size_t strlen(const char* text) {
  std::size_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}

int _purecall() { Fail("a pure virtual function was called"); }

void mainCRTStartup() {
  const char* arguments = GetCommandLineA();
  // The name of the program is first, in quotes if there is a space in it.
  const char end = *arguments == '"' ? '"' : ' ';
  if (*arguments == '"') ++arguments;
  while (*arguments != 0 && *arguments != end) ++arguments;
  if (*arguments == '"') ++arguments;
  while (*arguments == ' ') ++arguments;
  ExitProcess(static_cast<std::uint32_t>(Main(arguments)));
}

}  // extern "C"

void* operator new(std::size_t size) { return HeapAlloc(GetProcessHeap(), 0, size); }
void* operator new[](std::size_t size) { return ::operator new(size); }

// It is an error of the library to release a block of another heap, or one that was released
// before.
void operator delete(void* block) noexcept {
  if (block == nullptr) return;
  if (HeapValidate(GetProcessHeap(), 0, block) == 0) {
    Fail("a released block is not in the process heap");
  }
  if (HeapFree(GetProcessHeap(), 0, block) == 0) Fail("a block cannot be released");
}
void operator delete(void* block, std::size_t) noexcept { ::operator delete(block); }
void operator delete[](void* block) noexcept { ::operator delete(block); }
void operator delete[](void* block, std::size_t) noexcept { ::operator delete(block); }
