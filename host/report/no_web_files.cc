// For builds without npm, which have no report page.
#include "web_files.h"

namespace report {

std::string_view WebStyles() { return {}; }
std::string_view WebScripts() { return {}; }
std::string_view WebPage() { return {}; }

}  // namespace report
