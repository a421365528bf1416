#include "common/exit_guard.h"

#include <atomic>
#include <condition_variable>

#include "common/clock.h"
#include "common/never_destroyed.h"
#include "platform/at_exit.h"
#include "platform/mutex.h"

namespace stream {
namespace {

struct Users {
  Mutex mutex;
  std::condition_variable left;
  int inside GUARDED_BY(mutex) = 0;  // threads inside libcurl
  std::atomic<bool> exiting{false};  // written with the mutex held, read without it
};

NeverDestroyed<Users> g_users;

void WaitForLibcurlUsers() {
  const MutexLock lock(g_users->mutex);
  g_users->exiting = true;
  CurrentClock().WaitFor(g_users->left, g_users->mutex, kMaxExitWait,
                         []() REQUIRES(g_users->mutex) { return g_users->inside == 0; });
}

bool Enter() {
  const MutexLock lock(g_users->mutex);
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
  const MutexLock lock(g_users->mutex);
  --g_users->inside;
  g_users->left.notify_all();
}

}  // namespace stream
