#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>

#include "platform/paths.h"

namespace stream::platform {
namespace {

// Converts bytes to characters, one to one (see paths.h).
std::wstring Widen(const std::string& text) {
  std::wstring wide(text.size(), L'\0');
  std::transform(text.begin(), text.end(), wide.begin(),
                 [](char c) { return static_cast<wchar_t>(static_cast<unsigned char>(c)); });
  return wide;
}

}  // namespace

std::string ModuleFileName() {
  std::array<char, kModuleNameSize> name{};
  const ssize_t length = readlink("/proc/self/exe", name.data(), name.size() - 1);
  return length > 0 ? std::string(name.data(), static_cast<std::size_t>(length)) : std::string();
}

std::wstring ModuleFileNameWide() { return Widen(ModuleFileName()); }

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

}  // namespace stream::platform
