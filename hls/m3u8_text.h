// How the text of a playlist is cut up. Pure functions.
#ifndef HLS_M3U8_TEXT_H_
#define HLS_M3U8_TEXT_H_

#include <cstddef>
#include <string>
#include <string_view>

// What is trimmed off lines, attribute names and attribute values.
inline constexpr std::string_view kM3u8Blanks = " \r\n\t";

// `text` without the characters in `set` at either end.
std::string_view Trimmed(std::string_view text, std::string_view set);

// The same in place.
void TrimChars(std::string& text, std::string_view set);

// Calls `visit` with each piece of `text` between separators, in order. There is one piece more
// than there are separators, so an empty text is one empty piece. An empty separator is never
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
