#include <windows.h>

#include <algorithm>
#include <string>

#include "platform/random_access_file.h"

namespace stream::platform {
namespace {

HANDLE HandleOf(std::intptr_t handle) { return reinterpret_cast<HANDLE>(handle); }

// Returns nullopt if the text is not UTF-8.
std::optional<std::wstring> Widen(const char* utf8) {
  const int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8, -1, nullptr, 0);
  if (length <= 0) return std::nullopt;
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, utf8, -1, wide.data(), length);
  wide.pop_back();  // the terminating zero
  return wide;
}

std::uint64_t Join(DWORD high, DWORD low) { return static_cast<std::uint64_t>(high) << 32 | low; }

}  // namespace

std::optional<RandomAccessFile> RandomAccessFile::Open(const char* path) {
  const auto wide = Widen(path);
  if (!wide) return std::nullopt;
  constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
  const HANDLE handle = CreateFileW(wide->c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
  if (handle == INVALID_HANDLE_VALUE) return std::nullopt;
  BY_HANDLE_FILE_INFORMATION facts{};
  if (GetFileType(handle) != FILE_TYPE_DISK || GetFileInformationByHandle(handle, &facts) == 0) {
    CloseHandle(handle);
    return std::nullopt;
  }
  const FileId id{facts.dwVolumeSerialNumber, Join(facts.nFileIndexHigh, facts.nFileIndexLow)};
  return RandomAccessFile(reinterpret_cast<std::intptr_t>(handle), id,
                          Join(facts.nFileSizeHigh, facts.nFileSizeLow));
}

RandomAccessFile::~RandomAccessFile() {
  if (handle_ != kClosed) CloseHandle(HandleOf(handle_));
}

std::uint64_t RandomAccessFile::Size() const {
  LARGE_INTEGER size{};
  if (GetFileSizeEx(HandleOf(handle_), &size) == 0) return 0;
  return static_cast<std::uint64_t>(size.QuadPart);
}

std::size_t RandomAccessFile::ReadAt(std::uint64_t offset, std::uint8_t* to,
                                     std::size_t size) const {
  constexpr std::size_t kMaxAtOnce = std::size_t{1} << 30;
  std::size_t done = 0;
  while (done < size) {
    const std::uint64_t position = offset + done;
    OVERLAPPED where{};
    where.Offset = static_cast<DWORD>(position);
    where.OffsetHigh = static_cast<DWORD>(position >> 32);
    DWORD count = 0;
    const auto wanted = static_cast<DWORD>(std::min(size - done, kMaxAtOnce));
    if (ReadFile(HandleOf(handle_), to + done, wanted, &count, &where) == 0 || count == 0) break;
    done += count;
  }
  return done;
}

}  // namespace stream::platform
