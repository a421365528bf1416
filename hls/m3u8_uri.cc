#include "hls/m3u8_uri.h"

namespace {

bool IsAbsolute(std::string_view line) {
  return line.starts_with("http://") || line.starts_with("https://");
}

// Scheme and host: the part before the first slash after the scheme, or all of `url` if there is
// none.
std::string_view HostPart(std::string_view url) {
  constexpr std::string_view kLongestScheme = "https://";
  return url.substr(0, url.find('/', kLongestScheme.size()));
}

// The part up to and including the last slash, even if that slash is in the query.
// Kept for compatibility.
std::string_view FolderPart(std::string_view url) { return url.substr(0, url.rfind('/') + 1); }

}  // namespace

std::string ResolveM3u8Uri(std::string_view baseUrl, std::string_view line) {
  if (IsAbsolute(line)) return std::string(line);
  const std::string_view front = line.starts_with('/') ? HostPart(baseUrl) : FolderPart(baseUrl);
  std::string uri;
  uri.reserve(front.size() + line.size());
  uri.append(front).append(line);
  return uri;
}
