#include "tests/structure/lock_checks/guarded_counter.h"

using namespace stream;

int main() {
  int total = 0;
  GuardedCounter counter(&total);
  counter.AddOne();
  counter.WaitForOne();
  counter.AddOneAfterAPause();
  counter.AddOneToTheTotal();
  const OuterLock lock(counter);
}
