#include "hls/m3u8_attributes.h"

#include "hls/m3u8_text.h"

namespace {

// Calls `visit` with each key and its value, in order.
template <typename Visit>
void ForEachAttribute(std::string_view text, std::string_view listSeparator,
                      std::string_view keyValueSeparator, Visit visit) {
  ForEachPiece(text, listSeparator, [&](std::string_view piece) {
    const std::size_t cut = piece.find(keyValueSeparator);
    if (cut == std::string_view::npos) return visit(std::string_view(), std::string_view());
    visit(Trimmed(piece.substr(0, cut), kM3u8Blanks),
          Trimmed(piece.substr(cut + keyValueSeparator.size()), kM3u8Blanks));
  });
}

}  // namespace

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

void FindAttributes(std::string_view text, std::string_view listSeparator,
                    std::string_view keyValueSeparator, std::span<WantedAttribute> wanted) {
  const auto keep = [wanted](std::string_view key, std::string_view value) {
    for (WantedAttribute& attribute : wanted) {
      if (attribute.key == key && !attribute.value) attribute.value = value;
    }
  };
  ForEachAttribute(text, listSeparator, keyValueSeparator, keep);
}
