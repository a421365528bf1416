#include "tests/structure/lock_checks/guarded_counter.h"

namespace stream {

int GuardedCounter::ReadDuringAPause() {
  const MutexLock lock(inner_);
  const MutexUnlock unlocked(inner_);
  return count_;
}

}  // namespace stream
