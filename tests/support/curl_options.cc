#include "tests/support/curl_options.h"

#include <dlfcn.h>

#include <cstdarg>
#include <mutex>

namespace {

using SetOption = CURLcode (*)(CURL*, CURLoption, ...);

std::mutex g_mutex;
std::map<CURL*, std::map<CURLoption, long>> g_numbers;  // guarded by g_mutex

SetOption LibcurlsOwn() {
  static const auto function = reinterpret_cast<SetOption>(dlsym(RTLD_NEXT, "curl_easy_setopt"));
  return function;
}

}  // namespace

std::map<CURLoption, long> CurlNumbers(CURL* handle) {
  const std::lock_guard lock(g_mutex);
  return g_numbers[handle];
}

// The kind of an option is in its number.
extern "C" CURLcode(curl_easy_setopt)(CURL* handle, CURLoption option, ...) {
  va_list arguments;
  va_start(arguments, option);
  CURLcode result = CURLE_UNKNOWN_OPTION;
  if (option < CURLOPTTYPE_OBJECTPOINT) {
    const long number = va_arg(arguments, long);
    const std::lock_guard lock(g_mutex);
    g_numbers[handle][option] = number;
    result = LibcurlsOwn()(handle, option, number);
    // NOLINTNEXTLINE(bugprone-branch-clone): the arguments differ in type
  } else if (option >= CURLOPTTYPE_OFF_T && option < CURLOPTTYPE_BLOB) {
    result = LibcurlsOwn()(handle, option, va_arg(arguments, curl_off_t));
  } else {
    result = LibcurlsOwn()(handle, option, va_arg(arguments, void*));
  }
  va_end(arguments);
  return result;
}
