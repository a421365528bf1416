// Splits and trims the text of a playlist. Pure functions.
#ifndef HLS_M3U8_TEXT_H_
#define HLS_M3U8_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>

// Trimmed from lines, attribute names and attribute values.
inline constexpr std::string_view kM3u8Blanks = " \r\n\t";

// Returns `text` without the characters of `set` at either end.
std::string_view Trimmed(std::string_view text, std::string_view set);

// Trims `text` in place.
void TrimChars(std::string& text, std::string_view set);

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

#endif  // HLS_M3U8_TEXT_H_
