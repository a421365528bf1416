#include "common/temp_files.h"

#include "common/temp_folder.h"

std::string GetTempDirA() { return TempFolderInUse().narrow; }

std::wstring GetTempDirW() { return TempFolderInUse().wide; }

// A file that cannot be opened in a directory that can be written stays where it is: it may be
// opened later.
std::string CreateCacheFile(const std::string& name) {
  ReturnToTempFolderBeside();
  OpenTempFile(name, "wb+");  // and closed at once
  return GetTempDirA() + name;
}

platform::File OpenTempFile(const std::string& name, const char* mode) {
  platform::File file = platform::OpenFile(GetTempDirA() + name, mode);
  if (file != nullptr || !LeaveUnwritableTempFolder()) return file;
  return platform::OpenFile(GetTempDirA() + name, mode);
}

std::string AnsiToUtf8(const std::string& text) { return platform::CodePageToUtf8(text); }
