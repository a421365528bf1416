#include <string>

#include "platform/code_page.h"

namespace platform {

std::string CodePageToUtf8(const std::string& text) { return text; }

}  // namespace platform
