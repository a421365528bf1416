#include "guarded_call.h"

#include <atomic>
#include <cstdio>
#include <exception>

namespace host {
namespace {

std::atomic<bool> g_reported{false};

// Builds no string: the exception may be std::bad_alloc.
void PrintFailure(const char* why) noexcept {
  if (g_reported.exchange(true)) return;
  std::fprintf(stderr, "a call from the library failed: %s\n", why);
}

}  // namespace

void ReportFailureOnce() noexcept {
  try {
    throw;
  } catch (const std::exception& failure) {
    PrintFailure(failure.what());
  } catch (...) {
    PrintFailure("no reason given");
  }
}

void ReportNextFailure() noexcept { g_reported = false; }

}  // namespace host
