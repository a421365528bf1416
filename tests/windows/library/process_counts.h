// Resources that this process holds, as Windows counts them.
#ifndef TESTS_WINDOWS_LIBRARY_PROCESS_COUNTS_H_
#define TESTS_WINDOWS_LIBRARY_PROCESS_COUNTS_H_

#include <cstddef>

std::size_t ThreadCount();
std::size_t PrivateBytes();

#endif  // TESTS_WINDOWS_LIBRARY_PROCESS_COUNTS_H_
