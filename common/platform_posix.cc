#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <string>

#include "common/platform.h"

namespace platform {
namespace {

std::size_t PageSize() {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

std::size_t RoundUp(std::size_t value, std::size_t multiple) {
  return (value + multiple - 1) / multiple * multiple;
}

// The whole pages within a range of memory.
struct PageRange {
  PageRange(void* memory, std::size_t size) {
    const auto address = reinterpret_cast<std::uintptr_t>(memory);
    const std::size_t skipped = RoundUp(address, PageSize()) - address;
    if (size < skipped + PageSize()) return;
    begin = static_cast<std::uint8_t*>(memory) + skipped;
    length = (size - skipped) / PageSize() * PageSize();
  }

  std::uint8_t* begin = nullptr;
  std::size_t length = 0;
};

// Converts between bytes and characters one to one (see platform.h).
std::wstring Widen(const std::string& text) {
  std::wstring wide(text.size(), L'\0');
  std::transform(text.begin(), text.end(), wide.begin(),
                 [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
  return wide;
}

std::string Narrow(const std::wstring& wide) {
  std::string text(wide.size(), '\0');
  std::transform(wide.begin(), wide.end(), text.begin(),
                 [](wchar_t c) { return static_cast<char>(static_cast<unsigned char>(c)); });
  return text;
}

}  // namespace

std::string ModuleFileName() {
  std::array<char, kModuleNameSize> name{};
  const ssize_t length = readlink("/proc/self/exe", name.data(), name.size() - 1);
  return length > 0 ? std::string(name.data(), static_cast<std::size_t>(length)) : std::string();
}

std::wstring ModuleFileNameWide() { return Widen(ModuleFileName()); }

bool MakeDirectory(const std::wstring& path) { return mkdir(Narrow(path).c_str(), 0777) == 0; }

bool MakePrivateDirectory(const std::wstring& path) {
  return mkdir(Narrow(path).c_str(), S_IRWXU) == 0;
}

void RemoveEmptyDirectory(const std::wstring& path) { rmdir(Narrow(path).c_str()); }

// Follows the rules for XDG base directories: a relative path is ignored.
std::string UserCacheDirectory() {
  const auto absolute = [](const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr && value[0] == '/' ? std::string(value) : std::string();
  };
  if (const std::string cache = absolute("XDG_CACHE_HOME"); !cache.empty()) return cache + "/";
  const std::string home = absolute("HOME");
  return home.empty() ? home : home + "/.cache/";
}

std::wstring UserCacheDirectoryWide() { return Widen(UserCacheDirectory()); }

std::string CodePageToUtf8(const std::string& text) { return text; }

File OpenFile(const std::string& path, const char* mode) {
  return File(std::fopen(path.c_str(), mode));
}

bool IsSpecialFile(const std::string& path) {
  struct stat facts {};
  return stat(path.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode);
}

std::tm LocalTime(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  return local;
}

void PrefaultPages(void* memory, std::size_t size) {
  [[maybe_unused]] const PageRange pages(memory, size);
#ifdef MADV_HUGEPAGE
  madvise(pages.begin, pages.length, MADV_HUGEPAGE);
#endif
#ifdef MADV_POPULATE_WRITE
  madvise(pages.begin, pages.length, MADV_POPULATE_WRITE);
#endif
}

// Maps more than needed and unmaps the parts before and after the aligned range.
void* MapPages(std::size_t size, std::size_t alignment) {
  const std::size_t kept = RoundUp(size, PageSize());
  const std::size_t mapped = kept + RoundUp(alignment, PageSize()) - PageSize();
  if (kept < size || mapped < kept) return nullptr;
  void* const memory =
      mmap(nullptr, mapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return nullptr;
  auto* const begin = static_cast<std::uint8_t*>(memory);
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  const std::size_t skipped = RoundUp(address, alignment) - address;
  const std::size_t after = mapped - skipped - kept;
  if (skipped != 0) munmap(begin, skipped);
  if (after != 0) munmap(begin + skipped + kept, after);
  return begin + skipped;
}

void UnmapPages(void* memory, std::size_t size) { munmap(memory, RoundUp(size, PageSize())); }

std::size_t TrimPages(void* memory, std::size_t size, std::size_t used) {
  const std::size_t kept = RoundUp(used, PageSize());
  const std::size_t mapped = RoundUp(size, PageSize());
  if (kept >= mapped) return mapped;
  munmap(static_cast<std::uint8_t*>(memory) + kept, mapped - kept);
  return kept;
}

void DiscardPages(void* memory, std::size_t size) {
  const PageRange pages(memory, size);
  if (pages.length != 0) madvise(pages.begin, pages.length, MADV_DONTNEED);
}

bool CallAtExit(void (*function)()) { return std::atexit(function) == 0; }

void SleepMilliseconds(unsigned milliseconds) {
  timespec left{};
  left.tv_sec = static_cast<time_t>(milliseconds / 1000);
  left.tv_nsec = static_cast<long>(milliseconds % 1000) * 1'000'000;
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

}  // namespace platform
