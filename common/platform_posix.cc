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

// One byte a character, both ways (platform.h says why).
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

// As the XDG Base Directory Specification has it: a relative path does not count.
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

std::tm LocalTime(std::time_t time) {
  std::tm local{};
  localtime_r(&time, &local);
  return local;
}

void BringIntoMemory(void* memory, std::size_t size) {
  const auto page = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  const std::size_t in_front = (page - reinterpret_cast<std::uintptr_t>(memory) % page) % page;
  if (size < in_front + page) return;
  [[maybe_unused]] auto* const begin = static_cast<std::uint8_t*>(memory) + in_front;
  [[maybe_unused]] const std::size_t whole_pages = (size - in_front) / page * page;
#ifdef MADV_HUGEPAGE
  madvise(begin, whole_pages, MADV_HUGEPAGE);
#endif
#ifdef MADV_POPULATE_WRITE
  madvise(begin, whole_pages, MADV_POPULATE_WRITE);
#endif
}

void SleepMilliseconds(unsigned milliseconds) {
  timespec left{};
  left.tv_sec = static_cast<time_t>(milliseconds / 1000);
  left.tv_nsec = static_cast<long>(milliseconds % 1000) * 1'000'000;
  while (nanosleep(&left, &left) != 0 && errno == EINTR) {
  }
}

}  // namespace platform
