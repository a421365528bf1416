// Private to the sources of platform/.
#ifndef PLATFORM_CODE_PAGE_WINDOWS_H_
#define PLATFORM_CODE_PAGE_WINDOWS_H_

#include <string>

namespace stream::platform {

// Converts 8-bit text from the system code page to UTF-16.
std::wstring CodePageToWide(const std::string& text);

}  // namespace stream::platform

#endif  // PLATFORM_CODE_PAGE_WINDOWS_H_
