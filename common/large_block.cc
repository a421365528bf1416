#include "common/large_block.h"

#include <new>

#include "common/separate_blocks.h"
#include "platform/pages.h"

namespace stream {
namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kSmallestMapped = 65536;  // smaller blocks are allocated on the heap

bool IsMapped(std::size_t size) { return !kSeparateBlocks && size >= kSmallestMapped; }

}  // namespace

void LargeBlockDeleter::operator()(std::uint8_t* block) const {
  if (IsMapped(size)) {
    platform::UnmapPages(block, size);
  } else {
    delete[] block;
  }
}

LargeBlock AllocateLargeBlock(std::size_t size) {
  if (!IsMapped(size)) return {new (std::nothrow) std::uint8_t[size], {size}};
  const std::size_t alignment = size < kLargePage ? kPage : kLargePage;
  return {static_cast<std::uint8_t*>(platform::MapPages(size, alignment)), {size}};
}

void DiscardPartOf(const LargeBlock& block, std::size_t begin, std::size_t end) {
  if (begin >= end || !IsMapped(block.get_deleter().size)) return;
  platform::DiscardPages(block.get() + begin, end - begin);
}

}  // namespace stream
