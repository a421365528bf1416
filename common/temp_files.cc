#include "common/temp_files.h"

#include "common/temp_folder.h"
#include "platform/code_page.h"

namespace stream {

std::string GetTempDirA() { return TempFolderInUse().narrow; }

std::wstring GetTempDirW() { return TempFolderInUse().wide; }

// If the directory is writable but the file cannot be opened, the path stays the same: the file may
// be opened later.
std::string CreateCacheFile(const std::string& name) {
  UseFolderBesideExecutable();
  OpenTempFile(name, "wb+");  // closed at once
  return GetTempDirA() + name;
}

platform::File OpenTempFile(const std::string& name, const char* mode) {
  platform::File file = platform::OpenFile(GetTempDirA() + name, mode);
  if (file != nullptr || !FallBackToCacheFolder()) return file;
  return platform::OpenFile(GetTempDirA() + name, mode);
}

std::string AnsiToUtf8(const std::string& text) { return platform::CodePageToUtf8(text); }

}  // namespace stream
