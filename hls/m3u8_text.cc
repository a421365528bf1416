#include "hls/m3u8_text.h"

#include <algorithm>

std::string_view Trimmed(std::string_view text, std::string_view set) {
  const std::size_t first = text.find_first_not_of(set);
  if (first == std::string_view::npos) return {};
  return text.substr(first, text.find_last_not_of(set) - first + 1);
}

void TrimChars(std::string& text, std::string_view set) {
  text.erase(0, std::min(text.find_first_not_of(set), text.size()));
  text.erase(text.find_last_not_of(set) + 1);
}
