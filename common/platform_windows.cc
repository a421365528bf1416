#include <share.h>
#include <windows.h>
// Must be included after windows.h.
#include <timeapi.h>

#include <array>
#include <memory>
#include <new>
#include <string>

#include "common/platform.h"

// Supported since Windows 10 version 1803; older headers do not define it.
#ifndef CREATE_WAITABLE_TIMER_HIGH_RESOLUTION
#define CREATE_WAITABLE_TIMER_HIGH_RESOLUTION 0x00000002
#endif

namespace platform {
namespace {

// A timer that is exact to about half a millisecond, even where Sleep(1) lasts 15 milliseconds.
class PreciseTimer {
 public:
  PreciseTimer()
      : timer_(CreateWaitableTimerExW(nullptr, nullptr, CREATE_WAITABLE_TIMER_HIGH_RESOLUTION,
                                      TIMER_ALL_ACCESS)) {
    if (timer_ == nullptr) timeBeginPeriod(kTickMilliseconds);  // makes a plain Sleep exact enough
  }
  ~PreciseTimer() {
    if (timer_ == nullptr) {
      timeEndPeriod(kTickMilliseconds);
    } else {
      CloseHandle(timer_);
    }
  }
  PreciseTimer(const PreciseTimer&) = delete;
  PreciseTimer& operator=(const PreciseTimer&) = delete;

  bool Wait(unsigned milliseconds) const {
    LARGE_INTEGER due;
    due.QuadPart = -10'000LL * milliseconds;  // relative, in units of 100 ns
    return timer_ != nullptr && SetWaitableTimer(timer_, &due, 0, nullptr, nullptr, FALSE) != 0 &&
           WaitForSingleObject(timer_, INFINITE) == WAIT_OBJECT_0;
  }

 private:
  static constexpr UINT kTickMilliseconds = 1;

  HANDLE timer_;
};

void WINAPI DeleteTimer(void* timer) { delete static_cast<PreciseTimer*>(timer); }

// Returns the timer of the calling thread. Each thread has its own, since a waitable timer has one
// due time. Returns null if there is no memory or no free slot.
//
// The system deletes the timer when the thread ends. A thread_local object cannot be used: GCC for
// Windows releases the memory of such objects before it runs their destructors. The slot is never
// freed, since the library stays loaded.
PreciseTimer* ThreadTimer() {
  static const DWORD slot = FlsAlloc(DeleteTimer);
  if (slot == FLS_OUT_OF_INDEXES) return nullptr;
  if (void* const timer = FlsGetValue(slot)) return static_cast<PreciseTimer*>(timer);
  std::unique_ptr<PreciseTimer> made(new (std::nothrow) PreciseTimer);
  if (made == nullptr || FlsSetValue(slot, made.get()) == 0) return nullptr;
  return made.release();
}

constexpr std::size_t kPageSize = 4096;  // of every 64-bit Windows

std::size_t RoundUp(std::size_t value, std::size_t multiple) {
  return (value + multiple - 1) / multiple * multiple;
}

void* MapAt(void* address, std::size_t size, DWORD kind) {
  return VirtualAlloc(address, size, kind, PAGE_READWRITE);
}

std::wstring CodePageToWide(const std::string& text) {
  const int size = MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, nullptr, 0);
  if (size <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, wide.data(), size);
  wide.resize(static_cast<std::size_t>(size) - 1);  // without the terminating zero
  return wide;
}

// Returns the absolute path. For a device ("NUL", "CON") this is "\\.\" and its name.
std::wstring FullPath(const std::wstring& path) {
  const DWORD size = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
  std::wstring full(size, L'\0');
  full.resize(size == 0 ? 0 : GetFullPathNameW(path.c_str(), size, full.data(), nullptr));
  return full;
}

bool IsDrive(const std::wstring& path, std::size_t at) {
  return path.size() > at + 1 && path[at + 1] == L':';
}

// True for "\\.\NUL" and "\\server\pipe\name", false for "\\.\C:\file".
bool IsDevicePath(const std::wstring& full) {
  constexpr std::size_t kPrefixSize = 4;
  if (full.starts_with(L"\\\\.\\") && !IsDrive(full, kPrefixSize)) return true;
  if (!full.starts_with(L"\\\\")) return false;
  const std::size_t share = full.find(L'\\', 2);
  return share != std::wstring::npos && _wcsnicmp(full.c_str() + share, L"\\pipe\\", 6) == 0;
}

}  // namespace

std::string ModuleFileName() {
  std::array<char, kModuleNameSize> name{};
  GetModuleFileNameA(nullptr, name.data(), static_cast<DWORD>(name.size()));
  name.back() = '\0';
  return name.data();
}

std::wstring ModuleFileNameWide() {
  std::array<wchar_t, kModuleNameSize> name{};
  GetModuleFileNameW(nullptr, name.data(), static_cast<DWORD>(name.size()));
  name.back() = L'\0';
  return {name.data(), static_cast<std::size_t>(lstrlenW(name.data()))};
}

bool MakeDirectory(const std::wstring& path) {
  return CreateDirectoryW(path.c_str(), nullptr) != 0;
}

// The directory is below the user's profile and inherits its access rights.
bool MakePrivateDirectory(const std::wstring& path) { return MakeDirectory(path); }

void RemoveEmptyDirectory(const std::wstring& path) { RemoveDirectoryW(path.c_str()); }

std::string UserCacheDirectory() {
  std::array<char, kModuleNameSize> path{};
  const DWORD length =
      GetEnvironmentVariableA("LOCALAPPDATA", path.data(), static_cast<DWORD>(path.size()));
  if (length == 0 || length >= path.size()) return {};
  return std::string(path.data()) + '\\';
}

std::wstring UserCacheDirectoryWide() {
  std::array<wchar_t, kModuleNameSize> path{};
  const DWORD length =
      GetEnvironmentVariableW(L"LOCALAPPDATA", path.data(), static_cast<DWORD>(path.size()));
  if (length == 0 || length >= path.size()) return {};
  return std::wstring(path.data()) + L'\\';
}

std::string CodePageToUtf8(const std::string& text) {
  const std::wstring wide = CodePageToWide(text);
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, nullptr, 0, nullptr, nullptr);
  if (length <= 0) return {};
  std::string utf8(static_cast<std::size_t>(length) + 1, '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, utf8.data(), length, nullptr, nullptr);
  utf8.resize(static_cast<std::size_t>(length) - 1);  // without the terminating zero
  return utf8;
}

File OpenFile(const std::string& path, const char* mode) {
  return File(_fsopen(path.c_str(), mode, _SH_DENYNO));
}

bool IsSpecialFile(const std::string& path) {
  std::wstring wide = CodePageToWide(path);
  if (wide.starts_with(L'/') && IsDrive(wide, 1)) wide.erase(0, 1);  // "/C:/file", from a URL
  const std::wstring full = FullPath(wide);
  if (full.empty() || IsDevicePath(full)) return !full.empty();
  const DWORD attributes = GetFileAttributesW(full.c_str());
  constexpr DWORD kSpecial = FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE;
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & kSpecial) != 0;
}

std::tm LocalTime(std::time_t time) {
  std::tm local{};
  localtime_s(&local, &time);
  return local;
}

void PrefaultPages(void* /*memory*/, std::size_t /*size*/) {}

// Reserves more than needed to find an aligned address, and releases it. Another thread may take
// that address before it is reserved again, so there are several attempts.
void* MapPages(std::size_t size, std::size_t alignment) {
  constexpr int kAttempts = 16;
  if (size + alignment < size) return nullptr;
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    void* const larger = MapAt(nullptr, size + alignment, MEM_RESERVE);
    if (larger == nullptr) return nullptr;
    const std::size_t address = RoundUp(reinterpret_cast<std::size_t>(larger), alignment);
    VirtualFree(larger, 0, MEM_RELEASE);
    void* const memory =
        MapAt(reinterpret_cast<void*>(address), size, MEM_RESERVE | MEM_COMMIT);  // NOLINT
    if (memory != nullptr) return memory;
  }
  return nullptr;
}

void UnmapPages(void* memory, std::size_t /*size*/) { VirtualFree(memory, 0, MEM_RELEASE); }

std::size_t TrimPages(void* memory, std::size_t size, std::size_t used) {
  const std::size_t kept = RoundUp(used, kPageSize);
  const std::size_t mapped = RoundUp(size, kPageSize);
  if (kept >= mapped) return mapped;
  VirtualFree(static_cast<char*>(memory) + kept, mapped - kept, MEM_DECOMMIT);
  return kept;
}

// MEM_RESET keeps pages from being written to the paging file. VirtualUnlock of pages that are not
// locked removes them from the working set.
void DiscardPages(void* memory, std::size_t size) {
  const std::size_t address = reinterpret_cast<std::size_t>(memory);
  const std::size_t skipped = RoundUp(address, kPageSize) - address;
  if (size < skipped + kPageSize) return;
  void* const begin = static_cast<char*>(memory) + skipped;
  const std::size_t length = (size - skipped) / kPageSize * kPageSize;
  VirtualAlloc(begin, length, MEM_RESET, PAGE_READWRITE);
  VirtualUnlock(begin, length);
}

bool CallAtExit(void (* /*function*/)()) { return false; }

void SleepMilliseconds(unsigned milliseconds) {
  const PreciseTimer* const timer = ThreadTimer();
  if (timer == nullptr || !timer->Wait(milliseconds)) Sleep(milliseconds);
}

}  // namespace platform
