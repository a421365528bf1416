#include "tests/structure/lock_checks/guarded_counter.h"

namespace stream {

void AddOneDuringAnOuterLock(GuardedCounter& counter) {
  const OuterLock lock(counter);
  counter.AddOne();
}

}  // namespace stream
