#include "common/exit_guard.h"

#include <atomic>
#include <condition_variable>
#include <mutex>

#include "common/clock.h"
#include "common/never_destroyed.h"
#include "platform/at_exit.h"

namespace stream {
namespace {

struct Users {
  std::mutex mutex;
  std::condition_variable left;
  int inside = 0;                    // threads inside libcurl; guarded by mutex
  std::atomic<bool> exiting{false};  // written with the mutex held, read without it
};

NeverDestroyed<Users> g_users;

void WaitForLibcurlUsers() {
  std::unique_lock lock(g_users->mutex);
  g_users->exiting = true;
  CurrentClock().WaitFor(g_users->left, lock, kMaxExitWait, [] { return g_users->inside == 0; });
}

bool Enter() {
  const std::lock_guard lock(g_users->mutex);
  if (g_users->exiting.load()) return false;
  ++g_users->inside;
  return true;
}

}  // namespace

void GuardExit() {
  [[maybe_unused]] static const bool registered = platform::CallAtExit(WaitForLibcurlUsers);
}

bool ProcessIsExiting() { return g_users->exiting.load(); }

LibcurlUse::LibcurlUse() : entered_(Enter()) {}

LibcurlUse::~LibcurlUse() {
  if (!entered_) return;
  const std::lock_guard lock(g_users->mutex);
  --g_users->inside;
  g_users->left.notify_all();
}

}  // namespace stream
