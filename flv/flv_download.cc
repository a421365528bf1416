#include "flv/flv_download.h"

#include "common/http_transfer.h"
#include "flv/flv_stream.h"

namespace {

// The transfer that this thread performs: the write callback gets no pointer of its own.
thread_local FlvTransfer* t_transfer = nullptr;

std::size_t OnFlvBytes(char* data, std::size_t size, std::size_t count, void* /*user*/) {
  return t_transfer == nullptr ? 0 : t_transfer->Take(data, size * count);
}

}  // namespace

std::size_t FlvTransfer::Take(const char* data, std::size_t length) {
  if (!g_flvRunning.load() || IsHtmlPage(data, length)) return 0;
  if (data == nullptr) return length;
  if (!g_flvStream->Stage(stream_, offset_, data, static_cast<std::uint32_t>(length))) return 0;
  offset_ += length;
  return length;
}

void DownloadFlv(const std::string& url, std::uint64_t stream) {
  FlvTransfer transfer(stream);
  t_transfer = &transfer;
  Download({url, GuardedCallback<OnFlvBytes>, nullptr, g_flvRunning}, 0);
  t_transfer = nullptr;
}
