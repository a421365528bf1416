#include <windows.h>

#include <array>
#include <string>

#include "platform/paths.h"

namespace stream::platform {

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

}  // namespace stream::platform
