#include "common/special_file.h"

#include <curl/curl.h>

#include <memory>

#include "common/console.h"
#include "common/once_per_start.h"
#include "platform/files.h"

namespace stream {
namespace {

struct UrlDeleter {
  void operator()(CURLU* url) const { curl_url_cleanup(url); }
};
struct CurlFreer {
  void operator()(char* text) const { curl_free(text); }
};
using Url = std::unique_ptr<CURLU, UrlDeleter>;
using CurlText = std::unique_ptr<char, CurlFreer>;

// Parses a URL as transfers do. Returns null if it is not a URL.
Url Parse(const std::string& url) {
  constexpr unsigned kFlags = CURLU_GUESS_SCHEME | CURLU_NON_SUPPORT_SCHEME | CURLU_ALLOW_SPACE;
  Url parsed(curl_url());
  if (parsed == nullptr || curl_url_set(parsed.get(), CURLUPART_URL, url.c_str(), kFlags) != 0)
    return nullptr;
  return parsed;
}

CurlText PartOf(const Url& url, CURLUPart part) {
  char* text = nullptr;
  return CurlText(curl_url_get(url.get(), part, &text, 0) == CURLUE_OK ? text : nullptr);
}

// Returns the path that libcurl would open; empty if it would open no file.
std::string FilePathOf(const std::string& url) {
  const Url parsed = Parse(url);
  if (parsed == nullptr) return {};
  const CurlText scheme = PartOf(parsed, CURLUPART_SCHEME);
  const CurlText path = PartOf(parsed, CURLUPART_PATH);
  if (scheme == nullptr || path == nullptr || curl_strequal(scheme.get(), "file") == 0) return {};
  int length = 0;
  const CurlText decoded(curl_easy_unescape(nullptr, path.get(), 0, &length));
  return decoded == nullptr ? std::string() : std::string(decoded.get());
}

}  // namespace

bool RefuseSpecialFile(const std::string& path, const std::string& url) {
  if (path.empty() || !platform::IsSpecialFile(path)) return false;
  if (IsFirstSinceStart(OncePerStart::kFileRefused)) {
    ConsoleLine("A FIFO, socket, device or directory is not played: " + url);
  }
  return true;
}

bool RefuseSpecialFileAddress(const std::string& url) {
  return RefuseSpecialFile(FilePathOf(url), url);
}

}  // namespace stream
