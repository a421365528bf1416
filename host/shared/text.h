// Numbers and foreign bytes as text, the same in every locale.
#ifndef HOST_SHARED_TEXT_H_
#define HOST_SHARED_TEXT_H_

#include <cstdint>
#include <string>
#include <string_view>

namespace host {

// With that many digits after the point, never with an exponent: "12.300".
std::string FixedText(double value, int digits);

// The shortest text without an exponent that reads back as the same float: "10.033333".
std::string ExactText(float value);

// Eight lower-case hexadecimal digits.
std::string HexText(std::uint32_t value);

// `bytes` made fit for one line of a terminal: the bytes of control characters, and bytes that are
// no UTF-8, become "\n", "\r", "\t" or "\x1b", and what follows the first few hundred is only
// counted. They come from servers and could otherwise move the cursor.
std::string PrintableText(std::string_view bytes);

}  // namespace host

#endif  // HOST_SHARED_TEXT_H_
