#include "hls/m3u8_attributes.h"

#include "hls/m3u8_text.h"

M3u8Attributes ParseAttributeList(std::string_view text, std::string_view listSeparator,
                                  std::string_view keyValueSeparator) {
  M3u8Attributes attributes;
  ForEachPiece(text, listSeparator, [&](std::string_view piece) {
    const std::size_t cut = piece.find(keyValueSeparator);
    const bool is_pair = cut != std::string_view::npos;
    const std::string_view key = is_pair ? Trimmed(piece.substr(0, cut), kM3u8Blanks) : "";
    // A key that is there already costs no allocation: lists may be long and repeat themselves.
    const auto place = attributes.lower_bound(key);
    if (place != attributes.end() && place->first == key) return;
    const std::string_view value =
        is_pair ? Trimmed(piece.substr(cut + keyValueSeparator.size()), kM3u8Blanks) : "";
    attributes.emplace_hint(place, key, value);
  });
  return attributes;
}

std::string_view AttributeValue(const M3u8Attributes& attributes, std::string_view key) {
  const auto place = attributes.find(key);
  return place == attributes.end() ? std::string_view() : place->second;
}
