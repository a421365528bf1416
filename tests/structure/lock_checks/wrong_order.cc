#include "tests/structure/lock_checks/guarded_counter.h"

void GuardedCounter::LockInTheWrongOrder() {
  const MutexLock inner(inner_);
  const MutexLock outer(outer_);
  AddLocked();
}
