#include "common/format_text.h"

#include <array>
#include <charconv>
#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <limits>

namespace stream {

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

std::string FixedText(double number) {
  constexpr int kPlaces = 6;
  constexpr std::size_t kSignPointAndFirstDigit = 3;
  constexpr std::size_t kMaxLength =
      std::numeric_limits<double>::max_exponent10 + kPlaces + kSignPointAndFirstDigit;
  std::array<char, kMaxLength> text{};
  const auto [end, error] = std::to_chars(text.data(), text.data() + text.size(), number,
                                          std::chars_format::fixed, kPlaces);
  return {text.data(), end};
}

}  // namespace stream
