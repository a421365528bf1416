// The sources of the page, which the build embeds in the program (embed_files.cmake).
#ifndef HOST_REPORT_WEB_FILES_H_
#define HOST_REPORT_WEB_FILES_H_

#include <string_view>

namespace report {

// All styles concatenated, all scripts concatenated, and the page. Empty in a build without npm.
std::string_view WebStyles();
std::string_view WebScripts();
std::string_view WebPage();

}  // namespace report

#endif  // HOST_REPORT_WEB_FILES_H_
