// Memory blocks for buffers that may grow large. Released blocks return to the system. The heap may
// keep a released large block as long as a small block that was allocated after it exists.
#ifndef COMMON_LARGE_BLOCK_H_
#define COMMON_LARGE_BLOCK_H_

#include <cstddef>
#include <cstdint>
#include <memory>

namespace stream {

inline constexpr std::size_t kLargePage = std::size_t{2} << 20;  // a large page of memory

struct LargeBlockDeleter {
  std::size_t size = 0;
  void operator()(std::uint8_t* block) const;
};
using LargeBlock = std::unique_ptr<std::uint8_t[], LargeBlockDeleter>;

// Returns null if there is no memory. The bytes are not initialised.
LargeBlock AllocateLargeBlock(std::size_t size);

// Releases the memory of a part of a block but keeps the addresses. Bytes that are read there
// before the next write are undefined.
void DiscardPartOf(const LargeBlock& block, std::size_t begin, std::size_t end);

}  // namespace stream

#endif  // COMMON_LARGE_BLOCK_H_
