#include <share.h>
#include <windows.h>

#include <cstddef>
#include <cstdio>
#include <string>

#include "code_page_windows.h"
#include "platform/files.h"

namespace stream::platform {
namespace {

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

bool MakeDirectory(const std::wstring& path) {
  return CreateDirectoryW(path.c_str(), nullptr) != 0;
}

// The directory is below the user's profile and inherits its access rights.
bool MakePrivateDirectory(const std::wstring& path) { return MakeDirectory(path); }

void RemoveEmptyDirectory(const std::wstring& path) { RemoveDirectoryW(path.c_str()); }

}  // namespace stream::platform
