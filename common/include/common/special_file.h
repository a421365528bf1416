// Detects local addresses that name a FIFO, socket, device or directory. Opening or reading one may
// block forever, and a stop cannot end that, so the component opens none of them.
#ifndef COMMON_SPECIAL_FILE_H_
#define COMMON_SPECIAL_FILE_H_

#include <string>

namespace stream {

// Returns true if `path`, a narrow path (platform/code_page.h), names one. Logs then, once a start,
// that `url` is refused.
bool RefuseSpecialFile(const std::string& path, const std::string& url);

// As RefuseSpecialFile, for the file that libcurl would open for `url`: libcurl decodes percent
// signs and drops host, query and fragment. Returns false for an address that is fetched from the
// network.
bool RefuseSpecialFileAddress(const std::string& url);

}  // namespace stream

#endif  // COMMON_SPECIAL_FILE_H_
