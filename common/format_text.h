// printf-style text of bounded length.
#ifndef COMMON_FORMAT_TEXT_H_
#define COMMON_FORMAT_TEXT_H_

#include <string>

// Formats as printf does. A text of more than 1024 characters, or one that cannot be formatted,
// becomes the empty string.
#if defined(__GNUC__)
__attribute__((format(printf, 1, 2)))
#endif
std::string
FormatText(const char* format, ...);

#endif  // COMMON_FORMAT_TEXT_H_
