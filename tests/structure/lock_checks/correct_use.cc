#include "tests/structure/lock_checks/guarded_counter.h"

int main() {
  GuardedCounter counter;
  counter.AddOne();
  counter.WaitForOne();
}
