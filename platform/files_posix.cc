#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <string>

#include "platform/files.h"

namespace stream::platform {
namespace {

// Converts a wide path to bytes, one to one (see paths.h).
std::string Narrow(const std::wstring& wide) {
  std::string text(wide.size(), '\0');
  std::transform(wide.begin(), wide.end(), text.begin(),
                 [](wchar_t c) { return static_cast<char>(static_cast<unsigned char>(c)); });
  return text;
}

}  // namespace

File OpenFile(const std::string& path, const char* mode) {
  return File(std::fopen(path.c_str(), mode));
}

bool IsSpecialFile(const std::string& path) {
  struct stat facts {};
  return stat(path.c_str(), &facts) == 0 && !S_ISREG(facts.st_mode);
}

bool MakeDirectory(const std::wstring& path) { return mkdir(Narrow(path).c_str(), 0777) == 0; }

bool MakePrivateDirectory(const std::wstring& path) {
  return mkdir(Narrow(path).c_str(), S_IRWXU) == 0;
}

void RemoveEmptyDirectory(const std::wstring& path) { rmdir(Narrow(path).c_str()); }

}  // namespace stream::platform
