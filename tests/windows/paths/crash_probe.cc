// Crashes, for the test that sees that a crash is not taken for success.
#include <cstdio>

int main() {
  std::puts("started");
  std::fflush(stdout);
  volatile int* const nowhere = nullptr;
  *nowhere = 1;
  return 0;
}
