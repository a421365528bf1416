// What libcurl is given by curl_easy_setopt: the program that is linked with curl_options.cc calls
// this function instead, which records numeric options and forwards the call. For shared libraries
// of ELF systems only.
#ifndef TESTS_SUPPORT_CURL_OPTIONS_H_
#define TESTS_SUPPORT_CURL_OPTIONS_H_

#include <curl/curl.h>

#include <map>

// The options of a handle that are numbers, as they were set last. They outlive a reset.
std::map<CURLoption, long> CurlNumbers(CURL* handle);

#endif  // TESTS_SUPPORT_CURL_OPTIONS_H_
