#include "common/format_text.h"

#include <array>
#include <cstdarg>
#include <cstddef>
#include <cstdio>

std::string FormatText(const char* format, ...) {
  constexpr std::size_t kMaxLength = 1024;
  std::array<char, kMaxLength + 1> text{};
  std::va_list arguments;
  va_start(arguments, format);
  const int length = std::vsnprintf(text.data(), text.size(), format, arguments);
  va_end(arguments);
  if (length < 1 || static_cast<std::size_t>(length) > kMaxLength) return {};
  return {text.data(), static_cast<std::size_t>(length)};
}
