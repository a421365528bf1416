// Parses the attribute lists of playlist tags, for example "PROGRAM-ID=1,BANDWIDTH=800000". Pure
// functions.
#ifndef HLS_M3U8_ATTRIBUTES_H_
#define HLS_M3U8_ATTRIBUTES_H_

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

using M3u8Attributes = std::map<std::string, std::string, std::less<>>;

// Splits `text` at every `listSeparator`, even inside quotes. Kept for compatibility. Splits each
// piece at its first `keyValueSeparator`. Keys and values are trimmed. If a key is repeated, its
// first value counts. A piece without a `keyValueSeparator` yields an empty key with an empty
// value.
M3u8Attributes ParseAttributeList(std::string_view text, std::string_view listSeparator,
                                  std::string_view keyValueSeparator);

// An attribute to look for. If it is found, its value is a view into the text.
struct WantedAttribute {
  std::string_view key;
  std::optional<std::string_view> value = {};
};

// Sets the value of each wanted attribute to the value that ParseAttributeList finds. Builds no
// table: for a line with millions of names that takes seconds.
void FindAttributes(std::string_view text, std::string_view listSeparator,
                    std::string_view keyValueSeparator, std::span<WantedAttribute> wanted);

#endif  // HLS_M3U8_ATTRIBUTES_H_
