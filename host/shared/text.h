// Numbers and untrusted bytes as text, independent of the locale.
#ifndef HOST_SHARED_TEXT_H_
#define HOST_SHARED_TEXT_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

// With `digits` digits after the point, never with an exponent: "12.300".
std::string FixedText(double value, int digits);

// The shortest text without an exponent that parses to the same float: "10.033333".
std::string ExactText(float value);

// Eight lower-case hexadecimal digits.
std::string HexText(std::uint32_t value);

// Makes `bytes` safe to print on one line of a terminal: control characters and invalid UTF-8 are
// escaped as "\n", "\r", "\t" or "\x1b", and bytes after the first few hundred are replaced by a
// count. Such bytes are sent by servers and could otherwise move the cursor.
std::string PrintableText(std::string_view bytes);

}  // namespace host

#endif  // HOST_SHARED_TEXT_H_
