// Blocks for buffers that may grow large. The heap may keep a large block for itself when it is
// released, for as long as a small one allocated after it lives; these go back to the system.
#ifndef COMMON_LARGE_BLOCK_H_
#define COMMON_LARGE_BLOCK_H_

#include <cstddef>
#include <cstdint>
#include <memory>

inline constexpr std::size_t kLargePage = std::size_t{2} << 20;  // of the system's memory

struct LargeBlockDeleter {
  std::size_t size = 0;
  void operator()(std::uint8_t* block) const;
};
using LargeBlock = std::unique_ptr<std::uint8_t[], LargeBlockDeleter>;

// Null when there is no memory. The bytes are not set.
LargeBlock AllocateLargeBlock(std::size_t size);

// Releases the memory of a part of a block but not its addresses. What is read there before the
// next write is undefined.
void DiscardPartOf(const LargeBlock& block, std::size_t begin, std::size_t end);

#endif  // COMMON_LARGE_BLOCK_H_
