// Keeps worker threads out of libcurl while the process exits.
//
// If a host returns from main without a stop, transfers are still running while exit() runs the
// exit handlers of the TLS library. These release objects that the transfers use, and the process
// crashes. GuardExit registers a handler that runs before them, since it is registered later. It
// aborts the transfers and waits until no thread is inside libcurl. After that no thread enters
// libcurl.
//
// Threads: safe from any thread. On a system that ends all other threads before a library's exit
// handlers run (platform/at_exit.h), ProcessIsExiting always returns false.
#ifndef COMMON_EXIT_GUARD_H_
#define COMMON_EXIT_GUARD_H_

#include <chrono>

namespace stream {

// The longest time that the exit waits for threads inside libcurl. libcurl calls the progress
// callback, which aborts a transfer, at least once a second.
inline constexpr std::chrono::milliseconds kMaxExitWait{1200};

// Registers the handler; only the first call has an effect. Call it after libcurl was initialised,
// since exit handlers run in the reverse order of their registration.
void GuardExit();

// True once the process has begun to exit.
bool ProcessIsExiting();

// Marks that the calling thread is inside libcurl. Converts to false if the process is exiting;
// libcurl must not be called then.
class LibcurlUse {
 public:
  LibcurlUse();
  ~LibcurlUse();
  LibcurlUse(const LibcurlUse&) = delete;
  LibcurlUse& operator=(const LibcurlUse&) = delete;

  explicit operator bool() const { return entered_; }

 private:
  const bool entered_;
};

}  // namespace stream

#endif  // COMMON_EXIT_GUARD_H_
