// The attribute lists of playlist tags, such as "PROGRAM-ID=1,BANDWIDTH=800000". Pure functions.
#ifndef HLS_M3U8_ATTRIBUTES_H_
#define HLS_M3U8_ATTRIBUTES_H_

#include <functional>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>

using M3u8Attributes = std::map<std::string, std::string, std::less<>>;

// Cuts `text` at every `listSeparator`, quoted or not (kept on purpose), and each piece at its
// first `keyValueSeparator`. Keys and values are trimmed; of a repeated key the first value counts.
// A piece without a `keyValueSeparator` yields the empty key with the empty value.
M3u8Attributes ParseAttributeList(std::string_view text, std::string_view listSeparator,
                                  std::string_view keyValueSeparator);

// An attribute that is looked for. The value, when there is one, is a part of the text.
struct WantedAttribute {
  std::string_view key;
  std::optional<std::string_view> value = {};
};

// Fills in what ParseAttributeList finds for each of these. Makes no table, which for a line of
// millions of names takes seconds.
void FindAttributes(std::string_view text, std::string_view listSeparator,
                    std::string_view keyValueSeparator, std::span<WantedAttribute> wanted);

#endif  // HLS_M3U8_ATTRIBUTES_H_
