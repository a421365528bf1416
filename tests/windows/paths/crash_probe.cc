// Crashes, for the test that a crash does not count as success.
#include <cstdio>

int main() {
  std::puts("started");
  std::fflush(stdout);
  volatile int* const nowhere = nullptr;
  *nowhere = 1;
  return 0;
}
