#include "common/http_transfer.h"

#include <cstring>

#include "common/clock.h"
#include "common/console.h"
#include "common/exit_guard.h"
#include "common/format_text.h"
#include "common/silence_watch.h"
#include "common/special_file.h"
#include "common/user_agent.h"

namespace stream {
namespace {

constexpr long kConnectTimeoutSeconds = 3;

// The size of libcurl's receive buffer. Write callbacks still get pieces of at most 16 KiB. With a
// receive buffer of only 16 KiB, a fast server costs three times as many system calls.
constexpr long kReceiveSize = 256L * 1024;

bool IsToEnd(const std::atomic<bool>& running) { return !running.load() || ProcessIsExiting(); }

// libcurl calls this at least about once a second, whatever the server does.
int EndWhenStopped(void* running, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return IsToEnd(*static_cast<const std::atomic<bool>*>(running)) ? 1 : 0;
}

// With this option a stop does not wait for a name server: libcurl leaves a running look-up behind.
void DoNotWaitForNameServers(CURL* handle) { curl_easy_setopt(handle, CURLOPT_QUICK_EXIT, 1L); }

// Refuses all other protocols of the system's libcurl, and redirects to local files.
void LimitProtocols(CURL* handle) {
  curl_easy_setopt(handle, CURLOPT_PROTOCOLS_STR, "http,https,file");
  curl_easy_setopt(handle, CURLOPT_REDIR_PROTOCOLS_STR, "http,https");
}

CURLcode InitialiseLibcurl() {
  const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
  GuardExit();
  return result;
}

// Keeps a task from continuing while the process exits: it would report the end of its transfer to
// a player that may not exist any more. A stop in another exit handler still ends the task.
void WaitForStop(const std::atomic<bool>& running) {
  while (running.load()) SleepFor(std::chrono::milliseconds(1));
}

CURLcode PerformUnlessExiting(CURL* handle, const std::atomic<bool>& running) {
  CURLcode result = CURLE_ABORTED_BY_CALLBACK;
  if (const LibcurlUse use; use) result = curl_easy_perform(handle);
  if (ProcessIsExiting()) WaitForStop(running);
  return result;
}

// The state of a running transfer with a silence limit.
struct WatchedTransfer {
  const std::atomic<bool>& running;
  SilenceWatch silence;
  std::uint64_t header_bytes = 0;
};

std::size_t CountHeaderBytes(char*, std::size_t size, std::size_t count, void* watched) {
  static_cast<WatchedTransfer*>(watched)->header_bytes += size * count;
  return size * count;
}

int EndWhenStoppedOrSilent(void* watched, curl_off_t, curl_off_t body_bytes, curl_off_t,
                           curl_off_t) {
  auto& transfer = *static_cast<WatchedTransfer*>(watched);
  if (IsToEnd(transfer.running)) return 1;
  const auto received = transfer.header_bytes + static_cast<std::uint64_t>(body_bytes);
  return transfer.silence.IsTooLong(received, CurrentClock().Now()) ? 1 : 0;
}

CURLcode PerformWatched(CURL* handle, const Transfer& transfer) {
  WatchedTransfer watched{transfer.running, {transfer.silence_limit, CurrentClock().Now()}};
  curl_easy_setopt(handle, CURLOPT_HEADERFUNCTION, CountHeaderBytes);
  curl_easy_setopt(handle, CURLOPT_HEADERDATA, &watched);
  curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, EndWhenStoppedOrSilent);
  curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &watched);
  const CURLcode result = PerformUnlessExiting(handle, transfer.running);
  curl_easy_reset(handle);  // `watched` does not outlive this call
  return result;
}

}  // namespace

// At exit the handle is not closed: closing its connection would call the TLS library.
void CurlHandleDeleter::operator()(CURL* handle) const {
  if (const LibcurlUse use; use) curl_easy_cleanup(handle);
}

bool PrepareTransfers() {
  static const bool prepared = InitialiseLibcurl() == CURLE_OK;
  return prepared;
}

CurlHandle MakeCurlHandle() { return CurlHandle(PrepareTransfers() ? curl_easy_init() : nullptr); }

void SetUpTransfer(CURL* handle, const Transfer& transfer) {
  curl_easy_reset(handle);
  curl_easy_setopt(handle, CURLOPT_URL, transfer.url.c_str());
  curl_easy_setopt(handle, CURLOPT_FOLLOWLOCATION, 1L);
  curl_easy_setopt(handle, CURLOPT_CONNECTTIMEOUT, kConnectTimeoutSeconds);
  curl_easy_setopt(handle, CURLOPT_BUFFERSIZE, kReceiveSize);
  curl_easy_setopt(handle, CURLOPT_NOSIGNAL, 1L);  // transfers run on worker threads
  curl_easy_setopt(handle, CURLOPT_WRITEFUNCTION, transfer.on_bytes);
  curl_easy_setopt(handle, CURLOPT_WRITEDATA, transfer.user);
  curl_easy_setopt(handle, CURLOPT_NOPROGRESS, 0L);
  curl_easy_setopt(handle, CURLOPT_XFERINFOFUNCTION, EndWhenStopped);
  curl_easy_setopt(handle, CURLOPT_XFERINFODATA, &transfer.running);
  DoNotWaitForNameServers(handle);
  LimitProtocols(handle);
}

CURLcode PerformTransfer(CURL* handle, const Transfer& transfer) {
  if (RefuseSpecialFileAddress(transfer.url)) return CURLE_FILE_COULDNT_READ_FILE;
  const bool is_watched = transfer.silence_limit > std::chrono::milliseconds::zero();
  const CURLcode result = is_watched ? PerformWatched(handle, transfer)
                                     : PerformUnlessExiting(handle, transfer.running);
  if (result == CURLE_OK) ConsoleLine("[DOWNLOAD]: " + transfer.url);
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
  if (PerformTransfer(handle.get(), transfer) == CURLE_ABORTED_BY_CALLBACK) {
    char nothing = '\0';
    transfer.on_bytes(&nothing, 1, 0, transfer.user);
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

}  // namespace stream
