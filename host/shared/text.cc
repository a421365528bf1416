#include "text.h"

#include <array>
#include <charconv>
#include <cstddef>

namespace host {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";

// Large enough for the largest double with 17 digits after the point.
using NumberBuffer = std::array<char, 352>;

std::string TextOf(const NumberBuffer& buffer, const std::to_chars_result& result) {
  return std::string(buffer.data(), static_cast<const char*>(result.ptr));
}

std::string EscapeOf(unsigned char control) {
  switch (control) {
    case '\n':
      return "\\n";
    case '\r':
      return "\\r";
    case '\t':
      return "\\t";
    default:
      return {'\\', 'x', kHexDigits[control >> 4], kHexDigits[control & 15]};
  }
}

struct ByteRange {
  unsigned char first;
  unsigned char last;
};

// The range allowed for the second byte of a multi-byte UTF-8 character with this first byte.
// Excludes control characters, overlong forms, surrogates and values above U+10FFFF.
ByteRange SecondBytes(unsigned char first) {
  switch (first) {
    case 0xc2:
    case 0xe0:
      return {0xa0, 0xbf};
    case 0xed:
      return {0x80, 0x9f};
    case 0xf0:
      return {0x90, 0xbf};
    case 0xf4:
      return {0x80, 0x8f};
    default:
      return {0x80, 0xbf};
  }
}

bool IsIn(const ByteRange& range, char byte) {
  const auto value = static_cast<unsigned char>(byte);
  return value >= range.first && value <= range.last;
}

// Length of the printable UTF-8 character at the start of `bytes`; 0 if there is none.
std::size_t CharacterLength(std::string_view bytes) {
  const auto first = static_cast<unsigned char>(bytes.front());
  if (first < 0x20 || first == 0x7f) return 0;
  if (first < 0x80) return 1;
  if (first < 0xc2 || first > 0xf4) return 0;
  const std::size_t length = first < 0xe0 ? 2 : first < 0xf0 ? 3 : 4;
  if (bytes.size() < length) return 0;
  if (!IsIn(SecondBytes(first), bytes[1])) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if (!IsIn({0x80, 0xbf}, bytes[i])) return 0;
  }
  return length;
}

}  // namespace

std::string FixedText(double value, int digits) {
  NumberBuffer buffer;
  return TextOf(buffer, std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::fixed, digits));
}

std::string ExactText(float value) {
  NumberBuffer buffer;
  return TextOf(buffer, std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                      std::chars_format::fixed));
}

std::string HexText(std::uint32_t value) {
  std::string text(8, '0');
  for (auto digit = text.rbegin(); digit != text.rend(); ++digit, value >>= 4) {
    *digit = kHexDigits[value & 15];
  }
  return text;
}

std::string PrintableText(std::string_view bytes) {
  constexpr std::size_t kLongest = 400;
  std::string text;
  std::size_t at = 0;
  while (at < bytes.size() && at < kLongest) {
    const std::size_t length = CharacterLength(bytes.substr(at));
    if (length == 0) {
      text += EscapeOf(static_cast<unsigned char>(bytes[at]));
      at += 1;
    } else {
      text += bytes.substr(at, length);
      at += length;
    }
  }
  if (at < bytes.size()) text += "... (" + std::to_string(bytes.size()) + " bytes)";
  return text;
}

}  // namespace host
