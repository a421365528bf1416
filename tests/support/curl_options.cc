#include "tests/support/curl_options.h"

#include <dlfcn.h>

#include <cstdarg>
#include <mutex>

namespace {

using SetOption = CURLcode (*)(CURL*, CURLoption, ...);

std::mutex g_mutex;
std::map<CURL*, std::map<CURLoption, long>> g_numbers;  // guarded by g_mutex

SetOption OriginalSetOption() {
  static const auto function = reinterpret_cast<SetOption>(dlsym(RTLD_NEXT, "curl_easy_setopt"));
  return function;
}

}  // namespace

std::map<CURLoption, long> CurlNumbers(CURL* handle) {
  const std::lock_guard lock(g_mutex);
  return g_numbers[handle];
}

// Replaces libcurl's function. libcurl declares the last named parameter as an enumeration, and in
// C++ va_start is undefined for such a type; hence a function of another name with the same symbol.
extern "C" CURLcode SetOptionAndRecord(CURL* handle, unsigned number_of_option,
                                       ...) __asm__("curl_easy_setopt");

// The type of an option's argument follows from the range of its number.
extern "C" CURLcode SetOptionAndRecord(CURL* handle, unsigned number_of_option, ...) {
  const auto option = static_cast<CURLoption>(number_of_option);
  va_list arguments;
  va_start(arguments, number_of_option);
  CURLcode result = CURLE_UNKNOWN_OPTION;
  if (option < CURLOPTTYPE_OBJECTPOINT) {
    const long number = va_arg(arguments, long);
    const std::lock_guard lock(g_mutex);
    g_numbers[handle][option] = number;
    result = OriginalSetOption()(handle, option, number);
    // NOLINTNEXTLINE(bugprone-branch-clone): the arguments differ in type
  } else if (option >= CURLOPTTYPE_OFF_T && option < CURLOPTTYPE_BLOB) {
    result = OriginalSetOption()(handle, option, va_arg(arguments, curl_off_t));
  } else {
    result = OriginalSetOption()(handle, option, va_arg(arguments, void*));
  }
  va_end(arguments);
  return result;
}
