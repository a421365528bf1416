#include "text.h"

#include <array>
#include <charconv>

namespace host {
namespace {

constexpr std::string_view kHexDigits = "0123456789abcdef";

// Room for the largest double and 17 digits after its point.
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
  std::string text;
  text.reserve(bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    if (byte < 0x20 || byte == 0x7f) {
      text += EscapeOf(byte);
    } else {
      text += c;
    }
  }
  return text;
}

}  // namespace host
