#include "tests/structure/lock_checks/guarded_counter.h"

int GuardedCounter::ReadWithoutTheMutex() { return count_; }
