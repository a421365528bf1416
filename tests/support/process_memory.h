// How much memory the test's process holds. Where that cannot be read, or would be that of a
// sanitizer, everything is 0.
#ifndef TESTS_SUPPORT_PROCESS_MEMORY_H_
#define TESTS_SUPPORT_PROCESS_MEMORY_H_

#include <cstddef>

struct ProcessMemory {
  std::size_t resident = 0;  // bytes in memory, as the system counts them
  std::size_t heap = 0;      // bytes allocated on the heap and not released
};

ProcessMemory MemoryOfThisProcess();

#endif  // TESTS_SUPPORT_PROCESS_MEMORY_H_
