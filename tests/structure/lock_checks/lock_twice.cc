#include "tests/structure/lock_checks/guarded_counter.h"

namespace stream {

void GuardedCounter::AddOneTwice() {
  const MutexLock lock(inner_);
  AddOne();
}

}  // namespace stream
