#include "tests/structure/lock_checks/guarded_counter.h"

namespace stream {

int GuardedCounter::ReadWithoutTheMutex() { return count_; }

}  // namespace stream
