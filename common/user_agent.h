// The choice of a mobile user agent by markers in the address.
#ifndef COMMON_USER_AGENT_H_
#define COMMON_USER_AGENT_H_

#include <curl/curl.h>

#include <string>

// The user agent for an address, or null for libcurl's default. "&pt=android&" wins over
// "&pt=ios&"; a marker at the very start does not count.
const char* UserAgentFor(const std::string& url);

// Sets it on a handle; true if there was one to set.
bool SetUserAgent(CURL* handle, const std::string& url);

#endif  // COMMON_USER_AGENT_H_
