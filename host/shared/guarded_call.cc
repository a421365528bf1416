#include "guarded_call.h"

#include <atomic>
#include <cstdio>
#include <exception>

namespace host {
namespace {

// Without a string of its own: memory may be out.
void Tell(const char* why) noexcept {
  static std::atomic<bool> is_told{false};
  if (is_told.exchange(true)) return;
  std::fprintf(stderr, "a call of the library could not be taken: %s\n", why);
}

}  // namespace

void TellFailureOnce() noexcept {
  try {
    throw;
  } catch (const std::exception& failure) {
    Tell(failure.what());
  } catch (...) {
    Tell("no reason given");
  }
}

}  // namespace host
