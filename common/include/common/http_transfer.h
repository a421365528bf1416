// One blocking libcurl transfer on the calling thread, with the settings that all pipelines share.
//
// The write callback gets each piece of the body as it is received: it may be one byte, it may be
// thousands. It returns how many bytes it took. If it did not take all of them, the transfer ends;
// this is how an error page is refused. A transfer also ends, within about a second, when its run
// flag is cleared, even while the server sends nothing.
//
// Certificates and host names are verified as libcurl does by default. An address must be an http,
// https or file address; any other fails. Redirects to http and https are followed.
#ifndef COMMON_HTTP_TRANSFER_H_
#define COMMON_HTTP_TRANSFER_H_

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

namespace stream {

struct CurlHandleDeleter {
  void operator()(CURL* handle) const;
};
using CurlHandle = std::unique_ptr<CURL, CurlHandleDeleter>;

// Initialises libcurl for the process; only the first call has an effect. Returns false if that
// failed. Call it on the host's thread before any task runs, so that the exit handler
// (exit_guard.h) is registered before an exit can begin.
bool PrepareTransfers();

// Returns a new easy handle, or null.
CurlHandle MakeCurlHandle();

struct Transfer {
  std::string url;
  curl_write_callback on_bytes;      // called on the thread that performs the transfer
  void* user;                        // borrowed; the last argument of on_bytes
  const std::atomic<bool>& running;  // must outlive the transfer

  // The transfer fails if it receives no byte of headers or body for this long. Zero: no limit.
  std::chrono::milliseconds silence_limit{0};
};

// Makes a write callback of a function that may throw, for example when memory runs out. An
// exception ends the transfer and does not pass through libcurl.
template <std::size_t (*kTake)(char*, std::size_t, std::size_t, void*)>
std::size_t GuardedCallback(char* bytes, std::size_t size, std::size_t count, void* user) noexcept {
  try {
    return kTake(bytes, size, count, user);
  } catch (...) {
    return 0;
  }
}

// Resets `handle` and sets the options that all requests share. Sets no range and no user agent.
void SetUpTransfer(CURL* handle, const Transfer& transfer);

// Performs a transfer that was set up, and logs "[DOWNLOAD]: " and the address on success. Blocks.
// `transfer` is the one that the handle was set up with. Fails at once if the address names a local
// special file (special_file.h).
CURLcode PerformTransfer(CURL* handle, const Transfer& transfer);

// Returns the open-ended range "N-": everything from `offset`. Kept for compatibility: the offset
// is formatted as a signed 32-bit number, so resuming past 2 GiB is not supported.
std::string RangeFrom(std::uint64_t offset);

// Returns a handle set up to fetch everything from `offset`; empty if libcurl provides no handle.
CurlHandle SetUpDownload(const Transfer& transfer, std::uint64_t offset);

// Performs the transfer; does nothing without a handle.
//
// If a stop ends the transfer in the progress callback, the write callback is then called with an
// empty piece. So the write callback notices every stop once.
void PerformDownload(const CurlHandle& handle, const Transfer& transfer);

// SetUpDownload and PerformDownload in one step.
void Download(const Transfer& transfer, std::uint64_t offset);

// Returns true if a piece of a body begins with "<html>". Servers send an HTML page instead of a
// stream if something is wrong.
bool IsHtmlPage(const char* bytes, std::size_t size);

}  // namespace stream

#endif  // COMMON_HTTP_TRANSFER_H_
