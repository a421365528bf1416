#include <string>

#include "platform/code_page.h"

namespace stream::platform {

std::string CodePageToUtf8(const std::string& text) { return text; }

}  // namespace stream::platform
