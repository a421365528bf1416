#include "interrupt.h"

#include <atomic>
#include <csignal>

namespace host {
namespace {

// The handler may run on a thread of the library.
std::atomic<bool> g_interrupted{false};
static_assert(std::atomic<bool>::is_always_lock_free, "a signal handler may not take a lock");

// Some systems reset the handler before calling it, so it is installed again for the next signal.
extern "C" void OnInterrupt(int signal) {
  std::signal(signal, OnInterrupt);
  g_interrupted = true;
}

}  // namespace

void InstallInterruptHandlers() {
  g_interrupted = false;
  std::signal(SIGINT, OnInterrupt);
  std::signal(SIGTERM, OnInterrupt);
}

bool Interrupted() { return g_interrupted.load(); }

}  // namespace host
