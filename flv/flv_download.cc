#include "flv/flv_download.h"

#include "common/http_transfer.h"
#include "flv/flv_stream.h"

namespace stream {
namespace {

std::size_t OnFlvBytes(char* data, std::size_t size, std::size_t count, void* transfer) {
  return static_cast<FlvTransfer*>(transfer)->OnBytes(data, size * count);
}

}  // namespace

std::size_t FlvTransfer::OnBytes(const char* data, std::size_t length) {
  if (!g_flvRunning.load() || IsHtmlPage(data, length)) return 0;
  if (data == nullptr) return length;
  if (!g_flvStream->Stage(run_, offset_, data, static_cast<std::uint32_t>(length))) return 0;
  offset_ += length;
  return length;
}

void DownloadFlv(const std::string& url, RunId run) {
  FlvTransfer transfer(run);
  Download({url, GuardedCallback<OnFlvBytes>, &transfer, g_flvRunning}, 0);
}

}  // namespace stream
