#include "common/temp_files.h"

#include "common/platform.h"

namespace {

// Everything up to and including the last separator of either kind; the whole name if it has none.
template <typename Text>
Text DirectoryOf(const Text& module_name, const Text& separators) {
  const auto last = module_name.find_last_of(separators);
  return last == Text::npos ? module_name : module_name.substr(0, last + 1);
}

}  // namespace

std::string TempDirBeside(const std::string& module_name) {
  return DirectoryOf<std::string>(module_name, "/\\") + "tmp/";
}

std::wstring TempDirBeside(const std::wstring& module_name) {
  return DirectoryOf<std::wstring>(module_name, L"/\\") + L"tmp";
}

std::string GetTempDirA() { return TempDirBeside(platform::ModuleFileName()); }

std::wstring GetTempDirW() { return TempDirBeside(platform::ModuleFileNameWide()); }

std::string CreateCacheFile(const std::string& name) {
  platform::MakeDirectory(GetTempDirW());
  std::string path = GetTempDirA() + name;
  platform::OpenFile(path, "wb+");  // and closed at once
  return path;
}

std::string AnsiToUtf8(const std::string& text) { return platform::CodePageToUtf8(text); }
