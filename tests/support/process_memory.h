// The memory used by the test's process. Both functions return 0 where it cannot be read, or where
// it would include the memory of a sanitizer.
#ifndef TESTS_SUPPORT_PROCESS_MEMORY_H_
#define TESTS_SUPPORT_PROCESS_MEMORY_H_

#include <cstddef>

// Resident bytes, as counted by the system.
std::size_t ResidentSize();

// Bytes allocated on the heap and not freed.
std::size_t HeapInUse();

#endif  // TESTS_SUPPORT_PROCESS_MEMORY_H_
