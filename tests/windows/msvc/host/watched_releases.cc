#include "watched_releases.h"

#include <string>

#include "report.h"
#include "system.h"

namespace {

// Offsets in a loaded module: the PE format, for 64 bits.
constexpr std::size_t kHeaderOffset = 0x3C;              // holds the offset of the PE header
constexpr std::size_t kImportTable = 24 + 112 + 12 * 8;  // of addresses; from the PE header

constexpr std::uint32_t kReadWrite = 4;  // PAGE_READWRITE

template <typename Type>
Type Read(const unsigned char* bytes) {
  Type value;
  memcpy(&value, bytes, sizeof(value));
  return value;
}

int ReleaseIfABlock(void* heap, std::uint32_t flags, void* block) {
  if (block != nullptr && HeapValidate(heap, flags, block) == 0) {
    Fail("the library releases a block that is not in the process heap");
  }
  return HeapFree(heap, flags, block);
}

}  // namespace

void WatchReleases() {
  auto* const module = static_cast<unsigned char*>(GetModuleHandleA("stream_downloader.dll"));
  const unsigned char* const table =
      module + Read<std::uint32_t>(module + kHeaderOffset) + kImportTable;
  const auto size = Read<std::uint32_t>(table + sizeof(std::uint32_t));
  auto* const imports = reinterpret_cast<void**>(module + Read<std::uint32_t>(table));
  std::uint32_t before = 0;
  Expect(VirtualProtect(imports, size, kReadWrite, &before) != 0, "the imports cannot be changed");
  int watched = 0;
  for (std::size_t i = 0; i < size / sizeof(void*); ++i) {
    if (imports[i] != reinterpret_cast<void*>(&HeapFree)) continue;
    imports[i] = reinterpret_cast<void*>(&ReleaseIfABlock);
    ++watched;
  }
  Expect(watched == 1, "the library does not import HeapFree");
}
