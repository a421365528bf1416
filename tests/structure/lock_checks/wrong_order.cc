#include "tests/structure/lock_checks/guarded_counter.h"

namespace stream {

void GuardedCounter::LockInTheWrongOrder() {
  const MutexLock inner(inner_);
  const MutexLock outer(outer_);
  AddLocked();
}

}  // namespace stream
