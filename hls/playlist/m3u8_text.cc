#include "hls/playlist/m3u8_text.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <limits>
#include <system_error>

namespace stream {
namespace {

std::string_view WithoutLeadingBlanks(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\n\v\f\r"), text.size()));
  return text;
}

const char* EndOf(std::string_view text) { return text.data() + text.size(); }

bool StartsWithDigit(std::string_view text) {
  return !text.empty() && text.front() >= '0' && text.front() <= '9';
}

template <typename Int>
bool ScanInteger(std::string_view& text, Int& value) {
  std::string_view rest = WithoutLeadingBlanks(text);
  const bool negative = rest.starts_with('-');
  std::string_view digits = rest;
  if (negative || rest.starts_with('+')) digits.remove_prefix(1);
  if (!StartsWithDigit(digits)) return false;
  if (!negative) rest = digits;  // from_chars does not accept a plus sign
  const auto [end, error] = std::from_chars(rest.data(), EndOf(rest), value);
  if (error == std::errc::result_out_of_range) {
    value = negative ? std::numeric_limits<Int>::min() : std::numeric_limits<Int>::max();
  }
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

// Returns whether an unsigned number that does not fit in a float is too large. If not, it is too
// small.
bool IsTooLarge(std::string_view number, std::chars_format format) {
  const bool hex = format == std::chars_format::hex;
  const std::size_t exponent_at = std::min(number.find_first_of(hex ? "pP" : "eE"), number.size());
  const std::string_view mantissa = number.substr(0, exponent_at);
  const std::size_t point = std::min(mantissa.find('.'), mantissa.size());
  const std::size_t first_digit = std::min(mantissa.find_first_not_of("0."), mantissa.size());
  const auto places = static_cast<std::int64_t>(point) - static_cast<std::int64_t>(first_digit);
  const std::string_view exponent = number.substr(exponent_at);
  return places * (hex ? 4 : 1) + ToInt32(exponent.substr(exponent.empty() ? 0 : 1)) > 0;
}

// "%f" reads "infi" as the start of "infinity" and fails if the rest is missing. from_chars stops
// after "inf" instead, so "inf" followed by another "i" is rejected here.
bool IsBrokenInfinity(std::string_view number, std::size_t length) {
  constexpr std::size_t kShort = 3;
  const auto is_i = [](char c) { return c == 'i' || c == 'I'; };
  return length == kShort && number.size() > kShort && is_i(number[0]) && is_i(number[kShort]);
}

// Skips a leading "0x" or "0X" in `number`. Returns whether there was one.
bool SkipHexPrefix(std::string_view& number) {
  if (!number.starts_with("0x") && !number.starts_with("0X")) return false;
  number.remove_prefix(2);
  return true;
}

// Rejects what from_chars accepts and "%f" does not: a second sign, and "inf" or "nan" after "0x".
bool MayBeNumber(std::string_view number, bool hex) {
  constexpr std::string_view kHexStart = ".0123456789abcdefABCDEF";
  if (number.empty() || number.front() == '-') return false;
  return !hex || kHexStart.find(number.front()) != std::string_view::npos;
}

// Calls `visit` with each key and its value, in order.
template <typename Visit>
void ForEachAttribute(std::string_view text, std::string_view list_separator,
                      std::string_view key_value_separator, Visit visit) {
  ForEachPiece(text, list_separator, [&](std::string_view piece) {
    const std::size_t cut = piece.find(key_value_separator);
    if (cut == std::string_view::npos) return visit(std::string_view(), std::string_view());
    std::string_view key = piece.substr(0, cut);
    std::string_view value = piece.substr(cut + key_value_separator.size());
    TrimChars(key, kM3u8Blanks);
    TrimChars(value, kM3u8Blanks);
    visit(key, value);
  });
}

}  // namespace

void TrimChars(std::string_view& text, std::string_view set) {
  text.remove_prefix(std::min(text.find_first_not_of(set), text.size()));
  text = text.substr(0, text.find_last_not_of(set) + 1);
}

bool ScanInt32(std::string_view& text, std::int32_t& value) { return ScanInteger(text, value); }

bool ScanInt64(std::string_view& text, std::int64_t& value) { return ScanInteger(text, value); }

bool ScanFloat(std::string_view& text, float& value) {
  std::string_view number = WithoutLeadingBlanks(text);
  const bool negative = number.starts_with('-');
  if (negative || number.starts_with('+')) number.remove_prefix(1);
  const bool hex = SkipHexPrefix(number);
  if (!MayBeNumber(number, hex)) return false;
  const auto format = hex ? std::chars_format::hex : std::chars_format::general;
  float magnitude = 0;
  const auto [end, error] = std::from_chars(number.data(), EndOf(number), magnitude, format);
  const auto length = static_cast<std::size_t>(end - number.data());
  if (error == std::errc::invalid_argument || IsBrokenInfinity(number, length)) return false;
  if (error == std::errc::result_out_of_range) {
    const bool too_large = IsTooLarge(number.substr(0, length), format);
    magnitude = too_large ? std::numeric_limits<float>::infinity() : 0.0F;
  }
  value = negative ? -magnitude : magnitude;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

std::int32_t ToInt32(std::string_view text) {
  std::int32_t value = 0;
  ScanInt32(text, value);
  return value;
}

void FindAttributes(std::string_view text, std::string_view listSeparator,
                    std::string_view keyValueSeparator, std::span<WantedAttribute> wanted) {
  const auto keep = [wanted](std::string_view key, std::string_view value) {
    for (WantedAttribute& attribute : wanted) {
      if (attribute.key == key && !attribute.value) attribute.value = value;
    }
  };
  ForEachAttribute(text, listSeparator, keyValueSeparator, keep);
}

M3u8Attributes ParseAttributeList(std::string_view text, std::string_view listSeparator,
                                  std::string_view keyValueSeparator) {
  M3u8Attributes attributes;
  const auto add = [&attributes](std::string_view key, std::string_view value) {
    // A repeated key costs no allocation: a long list may repeat its keys.
    const auto place = attributes.lower_bound(key);
    if (place != attributes.end() && place->first == key) return;
    attributes.emplace_hint(place, key, value);
  };
  ForEachAttribute(text, listSeparator, keyValueSeparator, add);
  return attributes;
}

}  // namespace stream
