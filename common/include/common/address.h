// Cleans media addresses and recognises local files. All functions are pure.
#ifndef COMMON_ADDRESS_H_
#define COMMON_ADDRESS_H_

#include <string>

namespace stream {

// Returns the part of `url` that can be requested: everything before the first control byte (below
// 0x20, or 0x7F). This removes a trailing CR LF and everything after it.
//
// Kept for compatibility: two adjacent bytes with the top bit set become one byte, their sum modulo
// 256. A byte with the top bit set that is followed by no such byte ends the address.
std::string CleanUrl(const std::string& url);

// The prefix of local file addresses. The rest of the address is the path, used unchanged.
inline constexpr char kFileScheme[] = "file://";

bool IsFileUrl(const std::string& url);

// Returns the path of a file address. Requires IsFileUrl(url).
std::string FileUrlPath(const std::string& url);

}  // namespace stream

#endif  // COMMON_ADDRESS_H_
