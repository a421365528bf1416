// The cache files of the pipelines, the directory that they are in, and the one text conversion
// that their paths need. temp_folder.h says which directory that is.
//
// None of these functions reports an error to its caller: a directory that cannot be made or
// written shows when a file in it is opened. The cache files have fixed names, so two processes
// started from the same executable share them.
#ifndef COMMON_TEMP_FILES_H_
#define COMMON_TEMP_FILES_H_

#include <string>

#include "common/platform.h"

// The temporary directory with a slash at its end, in the system code page: file names are appended
// to it.
std::string GetTempDirA();

// The same with no separator at its end: the form that makes it.
std::wstring GetTempDirW();

// Makes the directory if need be, then creates or empties the file `name` in it. Returns its path,
// also where it could not be created.
std::string CreateCacheFile(const std::string& name);

// Opens the file `name` in the directory, which it does not make beside the executable, with a mode
// of fopen. Null when it cannot be opened.
platform::File OpenTempFile(const std::string& name, const char* mode);

// 8-bit text in the system code page as UTF-8.
std::string AnsiToUtf8(const std::string& text);

#endif  // COMMON_TEMP_FILES_H_
