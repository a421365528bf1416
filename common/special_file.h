// Local addresses that name a FIFO, socket, device or directory. Whoever opens or reads one may
// wait for ever, where no stop reaches it, so the component opens none of them.
#ifndef COMMON_SPECIAL_FILE_H_
#define COMMON_SPECIAL_FILE_H_

#include <string>

// True if `path`, a narrow path (platform.h), names one. The refusal of `url` is then logged, once
// a start.
bool RefuseSpecialFile(const std::string& path, const std::string& url);

// The same for the file that libcurl would open for `url`: it decodes percent signs and drops host,
// query and fragment. False for an address that is fetched from the network.
bool RefuseSpecialFileAddress(const std::string& url);

#endif  // COMMON_SPECIAL_FILE_H_
