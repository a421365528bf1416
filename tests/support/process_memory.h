// How much memory the test's process holds. Where that cannot be read, or would be that of a
// sanitizer, both are 0.
#ifndef TESTS_SUPPORT_PROCESS_MEMORY_H_
#define TESTS_SUPPORT_PROCESS_MEMORY_H_

#include <cstddef>

// Bytes in memory, as the system counts them.
std::size_t ResidentSize();

// Bytes allocated on the heap and not released.
std::size_t HeapInUse();

#endif  // TESTS_SUPPORT_PROCESS_MEMORY_H_
