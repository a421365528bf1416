#include "common/http_transfer.h"

#include <cstring>

#include "common/console.h"
#include "common/format_text.h"
#include "common/user_agent.h"

namespace {

constexpr long kConnectTimeoutSeconds = 3;

// What libcurl asks the system for at once. Write callbacks get pieces of 16 KiB at most all the
// same; with as little as that to receive, a fast server costs three times as many system calls.
constexpr long kReceiveSize = 256L * 1024;

// libcurl calls this about once a second, or more often, whatever the server does.
int EndWhenStopped(void* running, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<const std::atomic<bool>*>(running)->load() ? 0 : 1;
}

// A stop must not wait for a name server either: libcurl leaves a look-up that still runs behind.
void DoNotWaitForNameServers(CURL* handle) { curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L); }

}  // namespace

CurlHandle MakeCurlHandle() {
  static const CURLcode initialised = curl_global_init(CURL_GLOBAL_DEFAULT);
  return CurlHandle(initialised == CURLE_OK ? curl_easy_init() : nullptr);
}

void SetUpTransfer(CURL* handle, const Transfer& transfer) {
  curl_easy_reset(handle);
  curl_easy_setopt(handle, CURLOPT_URL, transfer.url.c_str());
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, kConnectTimeoutSeconds);
  curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, kReceiveSize);
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);  // transfers run on worker threads
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, transfer.on_bytes);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, nullptr);
  curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, EndWhenStopped);
  curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &transfer.running);
  DoNotWaitForNameServers(handle);
}

CURLcode PerformTransfer(CURL* handle, const std::string& url) {
  const CURLcode result = curl_easy_perform(handle);
  if (result == CURLE_OK) ConsoleLine("[DOWNLOAD]: " + url);
  return result;
}

std::string RangeFrom(std::uint64_t offset) {
  return FormatText("%ld-", static_cast<long>(static_cast<std::int32_t>(offset)));
}

CurlHandle SetUpDownload(const Transfer& transfer, std::uint64_t offset) {
  CurlHandle handle = MakeCurlHandle();
  if (handle == nullptr) return handle;
  SetUpTransfer(handle.get(), transfer);
  curl_easy_setopt(handle.get(), CURLOPT_RANGE, RangeFrom(offset).c_str());
  SetUserAgent(handle.get(), transfer.url);
  return handle;
}

void PerformDownload(const CurlHandle& handle, const Transfer& transfer) {
  if (handle == nullptr) return;
  if (PerformTransfer(handle.get(), transfer.url) == CURLE_ABORTED_BY_CALLBACK) {
    char nothing = '\0';
    transfer.on_bytes(&nothing, 1, 0, nullptr);
  }
}

void Download(const Transfer& transfer, std::uint64_t offset) {
  PerformDownload(SetUpDownload(transfer, offset), transfer);
}

bool IsHtmlPage(const char* bytes, std::size_t size) {
  static constexpr char kTag[] = "<html>";
  constexpr std::size_t kLength = sizeof(kTag) - 1;
  return bytes != nullptr && size >= kLength && std::memcmp(bytes, kTag, kLength) == 0;
}
