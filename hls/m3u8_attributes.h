// The attribute lists of playlist tags, such as "PROGRAM-ID=1,BANDWIDTH=800000". Pure functions.
#ifndef HLS_M3U8_ATTRIBUTES_H_
#define HLS_M3U8_ATTRIBUTES_H_

#include <functional>
#include <map>
#include <string>
#include <string_view>

using M3u8Attributes = std::map<std::string, std::string, std::less<>>;

// Cuts `text` at every `listSeparator`, quoted or not (kept on purpose), and each piece at its
// first `keyValueSeparator`. Keys and values are trimmed; of a repeated key the first value counts.
// A piece without a `keyValueSeparator` yields the empty key with the empty value.
M3u8Attributes ParseAttributeList(std::string_view text, std::string_view listSeparator,
                                  std::string_view keyValueSeparator);

// The value of `key`, empty when it is not there. Lives as long as `attributes` stay as they are.
std::string_view AttributeValue(const M3u8Attributes& attributes, std::string_view key);

#endif  // HLS_M3U8_ATTRIBUTES_H_
