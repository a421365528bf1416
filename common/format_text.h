// printf-style text of bounded length. Numbers never depend on the locale that the host has set.
#ifndef COMMON_FORMAT_TEXT_H_
#define COMMON_FORMAT_TEXT_H_

#include <string>

// Formats as printf does. A text of more than 1024 characters, or one that cannot be formatted,
// becomes the empty string. A number with a fraction is formatted by FixedText: what "%f" writes
// depends on the locale.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
std::string
FormatText(const char* format, ...);

// The number with six digits after a point, as "%f" writes it in the C locale.
std::string FixedText(double number);

#endif  // COMMON_FORMAT_TEXT_H_
