// Records the numeric options that are passed to curl_easy_setopt: a program that is linked with
// curl_options.cc calls a replacement, which records the option and forwards the call. Works with
// shared libraries on ELF systems only.
#ifndef TESTS_SUPPORT_CURL_OPTIONS_H_
#define TESTS_SUPPORT_CURL_OPTIONS_H_

#include <curl/curl.h>

#include <map>

// The numeric options of a handle, each with the value set last. A reset of the handle does not
// clear them.
std::map<CURLoption, long> CurlNumbers(CURL* handle);

#endif  // TESTS_SUPPORT_CURL_OPTIONS_H_
