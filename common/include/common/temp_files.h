// The cache files of the pipelines, their directory (chosen by temp_folder.h), and the text
// conversion for their paths.
//
// These functions report no errors: if a directory cannot be created or written, opening a file in
// it fails. The cache files have fixed names, so two processes of the same executable share them.
#ifndef COMMON_TEMP_FILES_H_
#define COMMON_TEMP_FILES_H_

#include <string>

#include "platform/files.h"

namespace stream {

// Returns the cache directory with a slash at its end, in the system code page. File names are
// appended to it.
std::string GetTempDirA();

// Returns the same directory without a separator at its end: the form for creating it.
// Kept for compatibility: nothing calls it.
std::wstring GetTempDirW();

// Creates the directory if needed, then creates or empties the file `name` in it. Returns the path
// of the file, even if it could not be created.
std::string CreateCacheFile(const std::string& name);

// Opens the file `name` in the directory with an fopen mode. Does not create the directory beside
// the executable. Returns null if the file cannot be opened.
platform::File OpenTempFile(const std::string& name, const char* mode);

// Converts 8-bit text from the system code page to UTF-8.
std::string AnsiToUtf8(const std::string& text);

}  // namespace stream

#endif  // COMMON_TEMP_FILES_H_
