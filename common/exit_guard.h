// Keeps worker threads out of libcurl while the process exits.
//
// A host that returns from main without a stop leaves transfers running, and exit() then runs the
// TLS library's exit handlers, which release what those transfers use: the process crashes. A
// handler of ours, registered later and hence run earlier, has the transfers aborted and waits
// until no thread is inside libcurl any more. From then on no thread enters it.
//
// Threads: safe from any thread. Where the system ends all other threads before a library's exit
// handlers run (platform.h), the process never counts as exiting here.
#ifndef COMMON_EXIT_GUARD_H_
#define COMMON_EXIT_GUARD_H_

#include <chrono>

// The exit waits no longer than this, even if a thread is still inside libcurl. libcurl calls the
// progress callback, which aborts a transfer, at least once a second.
inline constexpr std::chrono::milliseconds kMaxExitWait{1200};

// Registers the handler; only the first call does. Call it after libcurl was initialised, since
// exit handlers run in the reverse order of their registration.
void GuardExit();

// True as soon as the process has begun to exit.
bool ProcessIsExiting();

// Marks that the calling thread is inside libcurl. False if the process is exiting: then libcurl
// must not be called.
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

#endif  // COMMON_EXIT_GUARD_H_
