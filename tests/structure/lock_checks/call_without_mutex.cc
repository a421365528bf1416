#include "tests/structure/lock_checks/guarded_counter.h"

namespace stream {

void GuardedCounter::AddWithoutTheMutex() { AddLocked(); }

}  // namespace stream
