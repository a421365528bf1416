// The directory beside the host's executable in which the pipelines keep their cache files, and the
// one text conversion that its paths need.
//
// None of these functions reports an error: a directory that cannot be made or written shows when a
// file in it is opened. The cache files have fixed names, so two processes started from the same
// executable share them.
#ifndef COMMON_TEMP_FILES_H_
#define COMMON_TEMP_FILES_H_

#include <string>

// Directory of the executable and "tmp/", in the system code page: file names are appended to it.
// The forward slash is kept on purpose, whatever the platform's separator is.
std::string GetTempDirA();

// Directory of the executable and "tmp", with no separator behind it: the form that makes it.
std::wstring GetTempDirW();

// The two forms for an executable of the given name. One with no separator at all is kept whole.
std::string TempDirBeside(const std::string& module_name);
std::wstring TempDirBeside(const std::wstring& module_name);

// Makes the directory if need be, then creates or empties the file `name` in it. Returns its path,
// also where it could not be created.
std::string CreateCacheFile(const std::string& name);

// 8-bit text in the system code page as UTF-8.
std::string AnsiToUtf8(const std::string& text);

#endif  // COMMON_TEMP_FILES_H_
