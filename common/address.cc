#include "common/address.h"

#include <cstddef>

namespace stream {
namespace {

bool IsHigh(unsigned char byte) { return (byte & 0x80) != 0; }
bool IsControl(unsigned char byte) { return byte < 0x20 || byte == 0x7F; }

}  // namespace

std::string CleanUrl(const std::string& url) {
  std::string clean;
  clean.reserve(url.size());
  for (std::size_t i = 0; i < url.size(); ++i) {
    const auto byte = static_cast<unsigned char>(url[i]);
    if (IsControl(byte)) break;
    if (!IsHigh(byte)) {
      clean += static_cast<char>(byte);
      continue;
    }
    if (i + 1 == url.size()) break;
    const auto partner = static_cast<unsigned char>(url[i + 1]);
    if (!IsHigh(partner)) break;
    clean += static_cast<char>(byte + partner);  // Kept for compatibility
    ++i;
  }
  return clean;
}

bool IsFileUrl(const std::string& url) { return url.starts_with(kFileScheme); }

std::string FileUrlPath(const std::string& url) { return url.substr(sizeof(kFileScheme) - 1); }

}  // namespace stream
