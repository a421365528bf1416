// printf-style text of limited length. Numbers do not depend on the locale that the host has set.
#ifndef COMMON_FORMAT_TEXT_H_
#define COMMON_FORMAT_TEXT_H_

#include <string>

namespace stream {

// Formats as printf does. Returns the empty string if the text is longer than 1024 characters or
// cannot be formatted. Use FixedText for numbers with a fraction: the output of "%f" depends on the
// locale.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
std::string
FormatText(const char* format, ...);

// Formats `number` with six digits after the point, as "%f" does in the C locale.
std::string FixedText(double number);

}  // namespace stream

#endif  // COMMON_FORMAT_TEXT_H_
