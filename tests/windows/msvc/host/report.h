// What this host prints for the test that started it.
#ifndef TESTS_MSVC_REPORT_H_
#define TESTS_MSVC_REPORT_H_

#include <cstdint>
#include <string>

void Print(const std::string& line);

// Prints the reason and ends the process with status 1.
[[noreturn]] void Fail(const std::string& reason);

inline void Expect(bool is_met, const char* what) {
  if (!is_met) Fail(what);
}

std::string Decimal(std::uint64_t number);

// Expects the heap of the process to be undamaged.
void ExpectValidHeap();

// The number of allocated blocks in the heap of the process.
std::uint64_t HeapBlocks();

#endif  // TESTS_MSVC_REPORT_H_
