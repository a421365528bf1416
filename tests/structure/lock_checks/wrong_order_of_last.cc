#include "tests/structure/lock_checks/guarded_counter.h"

namespace stream {

void GuardedCounter::LockTheLastMutexFirst() {
  const MutexLock last(last_);
  const MutexLock inner(inner_);
  AddLocked();
}

}  // namespace stream
