// One blocking libcurl transfer on the calling thread, set up the way all pipelines share.
//
// The write callback gets each piece of the body as it arrives: it may be one byte, it may be
// thousands. It returns how many it took; anything but all of them ends the transfer, which is how
// an error page is refused. A transfer also ends, within about a second, when its run flag is
// cleared, even while the server sends nothing.
//
// Certificates and host names are verified as libcurl does by default. Addresses are http, https
// and file addresses; any other fails. Redirects to http and https are followed.
#ifndef COMMON_HTTP_TRANSFER_H_
#define COMMON_HTTP_TRANSFER_H_

#include <curl/curl.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

struct CurlHandleDeleter {
  void operator()(CURL* handle) const;
};
using CurlHandle = std::unique_ptr<CURL, CurlHandleDeleter>;

// Initialises libcurl for the process; only the first call does. False if that failed. The host's
// thread calls it before any task runs: an exit that begins then finds its handler registered
// (exit_guard.h).
bool PrepareTransfers();

// A new easy handle, or null.
CurlHandle MakeCurlHandle();

struct Transfer {
  std::string url;
  curl_write_callback on_bytes;      // called on the thread that performs the transfer
  const std::atomic<bool>& running;  // outlives the transfer

  // A transfer that receives no byte, of headers or body, for so long fails. Zero: it never does.
  std::chrono::milliseconds silence_limit{0};
};

// Makes a write callback of a function that may throw, when memory runs out say: nothing is thrown
// through libcurl, the transfer ends instead.
template <std::size_t (*kTake)(char*, std::size_t, std::size_t, void*)>
std::size_t GuardedCallback(char* bytes, std::size_t size, std::size_t count, void* user) noexcept {
  try {
    return kTake(bytes, size, count, user);
  } catch (...) {
    return 0;
  }
}

// Resets `handle` and sets all that every request shares, but no range and no user agent.
void SetUpTransfer(CURL* handle, const Transfer& transfer);

// Performs a transfer that was set up, and logs "[DOWNLOAD]: " and the address on success. Blocks.
// `transfer` is the one that the handle was set up with. Fails at once for a local address that
// names no regular file (special_file.h).
CURLcode PerformTransfer(CURL* handle, const Transfer& transfer);

// The open-ended range "N-" that asks for everything from `offset`. The offset is written as a
// 32-bit signed number on purpose: resuming past 2 GiB is not supported.
std::string RangeFrom(std::uint64_t offset);

// A handle set up to fetch everything from `offset`; empty when there is none to be had.
CurlHandle SetUpDownload(const Transfer& transfer, std::uint64_t offset);

// Performs it; without a handle nothing happens.
//
// A transfer that ended because the run flag was cleared, with no callback there to notice, is told
// to the callback as an empty piece: every stop reaches it once.
void PerformDownload(const CurlHandle& handle, const Transfer& transfer);

// Both in one step.
void Download(const Transfer& transfer, std::uint64_t offset);

// True when a piece of a body is the start of an HTML page, which servers send instead of a stream
// when something is wrong: it is longer than five bytes and begins with "<html>".
bool IsHtmlPage(const char* bytes, std::size_t size);

#endif  // COMMON_HTTP_TRANSFER_H_
