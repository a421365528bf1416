// What this host writes for the test that started it.
#ifndef TESTS_MSVC_REPORT_H_
#define TESTS_MSVC_REPORT_H_

#include <cstdint>
#include <string>

void Print(const std::string& line);

// Writes the reason and ends the process with status 1.
[[noreturn]] void Fail(const std::string& reason);

inline void Expect(bool is_met, const char* what) {
  if (!is_met) Fail(what);
}

std::string Decimal(std::uint64_t number);

// Everything in the heap of the process is as the system left it.
void ExpectValidHeap();

// Blocks that are allocated from the heap of the process.
std::uint64_t HeapBlocks();

#endif  // TESTS_MSVC_REPORT_H_
