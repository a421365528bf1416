#include "tests/structure/lock_checks/guarded_counter.h"

using namespace stream;

int main() {
  GuardedCounter counter;
  counter.AddOne();
  counter.WaitForOne();
  counter.AddOneAfterAPause();
  const OuterLock lock(counter);
}
