// Media addresses as text: cleaning them, and telling local files. Pure functions.
#ifndef COMMON_ADDRESS_H_
#define COMMON_ADDRESS_H_

#include <string>

// Returns the part of `url` that can be requested: everything before the first control byte (below
// 0x20, or 0x7F), with each pair of bytes that have their top bit set folded into one byte, their
// sum modulo 256. A byte with its top bit set and no such partner ends the address as well. So a
// trailing CR LF goes, and so does whatever followed it.
std::string CleanUrl(const std::string& url);

// Addresses with this prefix name a local file: the rest is its path, as it stands.
inline constexpr char kFileScheme[] = "file://";

bool IsFileUrl(const std::string& url);

// The path of a file address. Call it only where IsFileUrl is true.
std::string FileUrlPath(const std::string& url);

#endif  // COMMON_ADDRESS_H_
