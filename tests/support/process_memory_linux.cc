#include <malloc.h>
#include <unistd.h>

#include <fstream>

#include "tests/support/process_memory.h"

std::size_t ResidentSize() {
  std::size_t total = 0;
  std::size_t resident = 0;
  std::ifstream("/proc/self/statm") >> total >> resident;
  return resident * static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
}

std::size_t HeapInUse() { return mallinfo2().uordblks; }
