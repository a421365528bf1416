// Keeps the library loaded until the process ends, as a linker option does on POSIX. A name look-up
// that libcurl left behind at a stop may still run in the library's code. Process-wide objects are
// never destroyed, so each reload would leak their memory.
#include <windows.h>

namespace {

[[maybe_unused]] const bool g_stays_loaded = [] {
  static const char inside = 0;
  HMODULE self = nullptr;
  return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                            reinterpret_cast<LPCWSTR>(&inside), &self) != 0;
}();

}  // namespace
