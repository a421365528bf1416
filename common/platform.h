// The component's interface to the operating system. The build compiles platform_windows.cc or
// platform_posix.cc, so that no source tests for the system.
//
// Narrow paths are in the system code page, with which the C runtime opens files. Wide paths are
// UTF-16 on Windows. POSIX has only narrow paths: there each character of a wide path holds one
// byte of the narrow path, so nothing is lost.
#ifndef COMMON_PLATFORM_H_
#define COMMON_PLATFORM_H_

#include <cstddef>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

namespace platform {

// Buffer size for the name of the executable, including the terminating zero. Longer names are cut.
inline constexpr std::size_t kModuleNameSize = 1024;

// Returns the path of the process's executable (not of this library), shorter than kModuleNameSize
// characters; empty if the system does not provide it.
std::string ModuleFileName();
std::wstring ModuleFileNameWide();

// Creates one directory. Returns false if it was not created, also if it already exists.
bool MakeDirectory(const std::wstring& path);

// As MakeDirectory, for a directory that only this user may enter.
bool MakePrivateDirectory(const std::wstring& path);

// Removes a directory if it is empty.
void RemoveEmptyDirectory(const std::wstring& path);

// Returns the directory for the user's cached files, with a separator at its end; empty if the user
// has none.
std::string UserCacheDirectory();
std::wstring UserCacheDirectoryWide();

// Converts 8-bit text from the system code page to UTF-8. POSIX has no code page of its own: there
// the text is returned unchanged.
std::string CodePageToUtf8(const std::string& text);

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Opens a file by a narrow path with an fopen mode. Returns null if it cannot be opened. Others may
// have the file open at the same time.
File OpenFile(const std::string& path, const char* mode);

// Returns true if a narrow path names something other than a regular file: a directory, FIFO,
// socket or device. Follows symbolic links. Returns false if nothing is there.
bool IsSpecialFile(const std::string& path);

// Converts `time` to the system's time zone.
std::tm LocalTime(std::time_t time);

// Asks the system to provide all pages of fresh memory now, as large pages if possible, instead of
// one page at each first touch. Only a hint: does nothing if the system cannot.
void PrefaultPages(void* memory, std::size_t size);

// Allocates memory directly from the system: `size` bytes, rounded up to whole pages, at a multiple
// of `alignment`, which is a power of two. Returns null if there is none. Released memory returns
// to the system at once, which the heap does not guarantee.
void* MapPages(std::size_t size, std::size_t alignment);

// Releases memory of this size that MapPages returned, or that TrimPages left.
void UnmapPages(void* memory, std::size_t size);

// Releases the whole pages after the first `used` bytes. Returns the remaining size.
std::size_t TrimPages(void* memory, std::size_t size, std::size_t used);

// Releases the whole pages of such memory but keeps the addresses. Bytes that are read there before
// the next write are undefined. Only a hint.
void DiscardPages(void* memory, std::size_t size);

// Makes exit() call `function`, before the functions registered so far. Returns false if it was not
// registered, as always on Windows: Windows ends all other threads before a library's exit
// functions run, so there is nothing to wait for, and a lock held by one of them would never be
// released.
bool CallAtExit(void (*function)());

// Sleeps for about this long, whatever the resolution of the system's timer.
void SleepMilliseconds(unsigned milliseconds);

}  // namespace platform

#endif  // COMMON_PLATFORM_H_
