#include "flv/flv_download.h"

#include <atomic>
#include <cstdint>

#include "common/http_transfer.h"
#include "flv/flv_state.h"

namespace {

std::atomic<std::uint64_t> g_flvDownloaded{0};  // of the stream, by libcurl

}  // namespace

void ResetFlvDownload() { g_flvDownloaded = 0; }

std::size_t TakeFlvBytes(char* data, std::size_t size, std::size_t count, void* /*user*/) {
  const auto length = static_cast<std::uint32_t>(size * count);
  if (!g_flvRunning.load() || IsHtmlPage(data, length)) return 0;
  if (data == nullptr) return length;
  return StageFlvBytes(g_flvDownloaded.fetch_add(length), data, length) ? length : 0;
}

void DownloadFlv(const std::string& url) {
  Download({url, GuardedCallback<TakeFlvBytes>, g_flvRunning}, 0);
}
