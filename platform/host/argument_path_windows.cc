// Arguments are in the system code page. A path constructed from them directly would read them as
// UTF-8.
#include <windows.h>

#include <cstddef>
#include <string>

#include "argument_path.h"

namespace host {

std::filesystem::path PathOfArgument(const std::string& argument) {
  const int size = static_cast<int>(argument.size());
  const int length = MultiByteToWideChar(CP_ACP, 0, argument.data(), size, nullptr, 0);
  std::wstring wide(static_cast<std::size_t>(length), L'\0');
  MultiByteToWideChar(CP_ACP, 0, argument.data(), size, wide.data(), length);
  return wide;
}

}  // namespace host
