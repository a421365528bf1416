// Chooses a mobile user agent by markers in the address.
#ifndef COMMON_USER_AGENT_H_
#define COMMON_USER_AGENT_H_

#include <curl/curl.h>

#include <string>

namespace stream {

// Returns the user agent for an address, or null for libcurl's default. "&pt=android&" takes
// precedence over "&pt=ios&". A marker at the very start of the address is ignored.
const char* UserAgentFor(const std::string& url);

// Sets the user agent for `url` on a handle. Returns false if libcurl's default applies.
bool SetUserAgent(CURL* handle, const std::string& url);

}  // namespace stream

#endif  // COMMON_USER_AGENT_H_
