#include "code_page_windows.h"

#include <windows.h>

#include <cstddef>
#include <string>

#include "platform/code_page.h"

namespace stream::platform {

std::wstring CodePageToWide(const std::string& text) {
  const int size = MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, nullptr, 0);
  if (size <= 0) return {};
  std::wstring wide(static_cast<std::size_t>(size), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, wide.data(), size);
  wide.resize(static_cast<std::size_t>(size) - 1);  // without the terminating zero
  return wide;
}

std::string CodePageToUtf8(const std::string& text) {
  const std::wstring wide = CodePageToWide(text);
  const int length =
      WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, nullptr, 0, nullptr, nullptr);
  if (length <= 0) return {};
  std::string utf8(static_cast<std::size_t>(length) + 1, '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide.c_str(), -1, utf8.data(), length, nullptr, nullptr);
  utf8.resize(static_cast<std::size_t>(length) - 1);  // without the terminating zero
  return utf8;
}

}  // namespace stream::platform
