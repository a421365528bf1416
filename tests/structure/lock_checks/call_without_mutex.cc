#include "tests/structure/lock_checks/guarded_counter.h"

void GuardedCounter::AddWithoutTheMutex() { AddLocked(); }
