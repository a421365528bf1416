// For a build without npm: there is no page.
#include "web_files.h"

namespace report {

std::string_view WebStyles() { return {}; }
std::string_view WebScripts() { return {}; }
std::string_view WebPage() { return {}; }

}  // namespace report
