// Once loaded, the library of which this is a part stays in the process, as it does on POSIX, where
// the linker says so: a name look-up that libcurl left behind at a stop may still run in its code,
// and what is process-wide is never destroyed, so loading it again would leak memory each time.
#include <windows.h>

namespace {

[[maybe_unused]] const bool g_stays_loaded = [] {
  static const char inside = 0;
  HMODULE self = nullptr;
  return GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_PIN | GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS,
                            reinterpret_cast<LPCWSTR>(&inside), &self) != 0;
}();

}  // namespace
