// The sources of the page, put into the program by the build (embed_files.cmake).
#ifndef HOST_REPORT_WEB_FILES_H_
#define HOST_REPORT_WEB_FILES_H_

#include <string_view>

namespace report {

// All styles, and all scripts, one after the other; the page itself. Empty in a build without npm.
std::string_view WebStyles();
std::string_view WebScripts();
std::string_view WebPage();

}  // namespace report

#endif  // HOST_REPORT_WEB_FILES_H_
