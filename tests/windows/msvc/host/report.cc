#include "report.h"

#include "system.h"

namespace {

constexpr std::uint32_t kStandardOutput = static_cast<std::uint32_t>(-11);
constexpr unsigned short kAllocated = 4;  // PROCESS_HEAP_ENTRY_BUSY

}  // namespace

void Print(const std::string& line) {
  const std::string text = line + "\n";
  std::uint32_t written = 0;
  WriteFile(GetStdHandle(kStandardOutput), text.data(), static_cast<std::uint32_t>(text.size()),
            &written, nullptr);
}

void Fail(const std::string& reason) {
  Print("failed: " + reason);
  ExitProcess(1);
}

std::string Decimal(std::uint64_t number) {
  char digits[20];
  std::size_t first = sizeof(digits);
  do {
    digits[--first] = static_cast<char>('0' + number % 10);
    number /= 10;
  } while (number != 0);
  return {digits + first, sizeof(digits) - first};
}

void ExpectValidHeap() {
  Expect(HeapValidate(GetProcessHeap(), 0, nullptr) != 0, "the heap is damaged");
}

std::uint64_t HeapBlocks() {
  void* const heap = GetProcessHeap();
  HeapEntry entry{};
  std::uint64_t blocks = 0;
  HeapLock(heap);
  while (HeapWalk(heap, &entry) != 0) {
    if ((entry.flags & kAllocated) != 0) ++blocks;
  }
  HeapUnlock(heap);
  return blocks;
}
