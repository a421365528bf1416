#include "tests/structure/lock_checks/guarded_counter.h"

namespace stream {

int GuardedCounter::ReadTheTotalWithoutTheMutex() { return *total_; }

}  // namespace stream
