// Where things are: the executable and the user's cache.
//
// Narrow paths are in the system code page, with which the C runtime opens files. Wide paths are
// UTF-16 on Windows. POSIX has only narrow paths: there each character of a wide path holds one
// byte of the narrow path, so nothing is lost.
#ifndef PLATFORM_PATHS_H_
#define PLATFORM_PATHS_H_

#include <cstddef>
#include <string>

namespace stream::platform {

// Buffer size for the name of the executable, including the terminating zero. Longer names are cut.
inline constexpr std::size_t kModuleNameSize = 1024;

// Returns the path of the process's executable (not of this library), shorter than kModuleNameSize
// characters; empty if the system does not provide it.
std::string ModuleFileName();
std::wstring ModuleFileNameWide();

// Returns the directory for the user's cached files, with a separator at its end; empty if the user
// has none.
std::string UserCacheDirectory();
std::wstring UserCacheDirectoryWide();

}  // namespace stream::platform

#endif  // PLATFORM_PATHS_H_
