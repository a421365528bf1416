// Reads pieces, numbers and attributes from the text of a playlist. Pure functions.
#ifndef HLS_PLAYLIST_M3U8_TEXT_H_
#define HLS_PLAYLIST_M3U8_TEXT_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace stream {

// Trimmed from lines, attribute names and attribute values.
inline constexpr std::string_view kM3u8Blanks = " \r\n\t";

// Removes the characters of `set` from both ends of `text`. The characters stay in memory; only the
// view becomes shorter.
void TrimChars(std::string_view& text, std::string_view set);

// Calls `visit` with each piece of `text` between separators, in order. There is one more piece
// than there are separators, so an empty text yields one empty piece. An empty separator is never
// found.
template <typename Visit>
void ForEachPiece(std::string_view text, std::string_view separator, Visit visit) {
  std::size_t end = 0;
  while (!separator.empty() && (end = text.find(separator)) != std::string_view::npos) {
    visit(text.substr(0, end));
    text.remove_prefix(end + separator.size());
  }
  visit(text);
}

// The Scan functions read a number at the beginning of a text, like the scanf patterns "%d", "%lld"
// and "%f": blanks are skipped, a sign may follow, and the first character that does not fit ends
// the number. Unlike scanf, they do not depend on the locale and do not read beyond the text, and a
// number that is out of range yields the nearest value in range.
//
// On success, each removes the number from the front of `text`, stores it and returns true. On
// failure, each leaves `value` unchanged and returns false.
bool ScanInt32(std::string_view& text, std::int32_t& value);
bool ScanInt64(std::string_view& text, std::int64_t& value);

// Accepts decimal and hexadecimal numbers, infinities and NaN, like "%f". A number that is too
// large for a float becomes an infinity, one that is too small becomes 0.
bool ScanFloat(std::string_view& text, float& value);

// Like atoi: returns 0 if the text does not begin with a number.
std::int32_t ToInt32(std::string_view text);

// An attribute to look for in an attribute list, for example "PROGRAM-ID=1,BANDWIDTH=800000". If it
// is found, its value is a view into the text.
struct WantedAttribute {
  std::string_view key;
  std::optional<std::string_view> value = {};
};

// Sets the value of each wanted attribute to the value that ParseAttributeList finds. Builds no
// table, which would take seconds for a line with millions of names.
void FindAttributes(std::string_view text, std::string_view listSeparator,
                    std::string_view keyValueSeparator, std::span<WantedAttribute> wanted);

using M3u8Attributes = std::map<std::string, std::string, std::less<>>;

// Returns all attributes of a list. Splits `text` at every `listSeparator`, even inside quotes.
// Kept for compatibility. Splits each piece at its first `keyValueSeparator`. Keys and values are
// trimmed. If a key is repeated, its first value counts. A piece without a `keyValueSeparator`
// yields an empty key with an empty value.
//
// The parser uses FindAttributes; this function is its reference in tests. The name is kept for
// compatibility.
M3u8Attributes ParseAttributeList(std::string_view text, std::string_view listSeparator,
                                  std::string_view keyValueSeparator);

}  // namespace stream

#endif  // HLS_PLAYLIST_M3U8_TEXT_H_
