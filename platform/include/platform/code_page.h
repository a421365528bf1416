// The encoding of narrow text: the system code page, with which the C runtime opens files.
#ifndef PLATFORM_CODE_PAGE_H_
#define PLATFORM_CODE_PAGE_H_

#include <string>

namespace stream::platform {

// Converts 8-bit text from the system code page to UTF-8. POSIX has no code page of its own: there
// the text is returned unchanged.
std::string CodePageToUtf8(const std::string& text);

}  // namespace stream::platform

#endif  // PLATFORM_CODE_PAGE_H_
