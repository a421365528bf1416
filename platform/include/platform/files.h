// Files and directories.
//
// Narrow paths are in the system code page (see code_page.h); wide paths are described in paths.h.
#ifndef PLATFORM_FILES_H_
#define PLATFORM_FILES_H_

#include <cstdio>
#include <memory>
#include <string>

namespace stream::platform {

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

// Creates one directory. Returns false if it was not created, also if it already exists.
bool MakeDirectory(const std::wstring& path);

// As MakeDirectory, for a directory that only this user may enter.
bool MakePrivateDirectory(const std::wstring& path);

// Removes a directory if it is empty.
void RemoveEmptyDirectory(const std::wstring& path);

}  // namespace stream::platform

#endif  // PLATFORM_FILES_H_
