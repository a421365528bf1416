// The one place where the operating system is met. platform_windows.cc or platform_posix.cc
// answers; no other file of the project asks which system it is built for.
//
// Narrow paths are in the system code page, which is what the C runtime opens files by. Wide paths
// are UTF-16 on Windows. POSIX has no second form of a path, so there a wide path holds one byte of
// the narrow one in each character and loses nothing.
#ifndef COMMON_PLATFORM_H_
#define COMMON_PLATFORM_H_

#include <cstddef>
#include <cstdio>
#include <ctime>
#include <memory>
#include <string>

namespace platform {

// Room for the name of the executable, the terminating zero included. Longer names are cut.
inline constexpr std::size_t kModuleNameSize = 1024;

// File name of the process's executable (not of this library), at most kModuleNameSize - 1
// characters; empty when the system does not tell.
std::string ModuleFileName();
std::wstring ModuleFileNameWide();

// Makes one directory. False when it could not be made, also because it exists.
bool MakeDirectory(const std::wstring& path);

// The same for a directory that this user alone may enter.
bool MakePrivateDirectory(const std::wstring& path);

// Removes a directory, if it is empty.
void RemoveEmptyDirectory(const std::wstring& path);

// The directory in which the user's programs keep what they can make again, with a separator at its
// end; empty where the user has none.
std::string UserCacheDirectory();
std::wstring UserCacheDirectoryWide();

// Converts 8-bit text from the system code page to UTF-8. POSIX has no code page of its own: there
// the text comes back as it is.
std::string CodePageToUtf8(const std::string& text);

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

// Opens a file by a narrow path with a mode of fopen. Null when it cannot be opened. Others may
// have it open at the same time.
File OpenFile(const std::string& path, const char* mode);

// Whether something other than a regular file is at a narrow path: a directory, FIFO, socket or
// device. Symbolic links are followed. False if nothing is there.
bool IsSpecialFile(const std::string& path);

// `time` by the clock on the wall, in the system's time zone.
std::tm LocalTime(std::time_t time);

// Has the system give fresh memory its pages now, all at once and large ones if it can, rather than
// one at each first touch. Only a hint: where the system cannot, nothing happens.
void BringIntoMemory(void* memory, std::size_t size);

// Memory straight from the system: `size` bytes, rounded up to whole pages, at a multiple of
// `alignment`, a power of two. Null when there is none. What is released goes
// back to the system at once, which the heap promises of no block.
void* MapPages(std::size_t size, std::size_t alignment);

// Releases what MapPages returned for this size, or what TrimPages left of it.
void UnmapPages(void* memory, std::size_t size);

// Releases the whole pages after the first `used` bytes. Returns the size that is left.
std::size_t TrimPages(void* memory, std::size_t size, std::size_t used);

// Releases the whole pages of such memory and keeps the addresses: what is read there before the
// next write is undefined. Only a hint.
void DiscardPages(void* memory, std::size_t size);

// Has exit() call `function`, before the functions registered so far. False, with nothing done,
// where it must not: Windows ends all other threads before a library's exit functions run, so
// nothing is left to wait for, and a lock that one of them held would never be released.
bool CallAtExit(void (*function)());

// Sleeps for about that long, whatever the resolution of the system's timer is.
void SleepMilliseconds(unsigned milliseconds);

}  // namespace platform

#endif  // COMMON_PLATFORM_H_
