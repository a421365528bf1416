// Reads pieces of a file that are close together with few system calls.
//
// There are two windows, since two tracks are read in turn from offsets that may be far apart. The
// first window is small, since most handles read little, and each following one is twice as large,
// up to a limit. A window keeps the bytes as they were when it was loaded. Not thread-safe.
#ifndef ISOBMFF_READ_CACHE_H_
#define ISOBMFF_READ_CACHE_H_

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "platform/random_access_file.h"

namespace stream::isobmff {

class ReadCache {
 public:
  // Returns false if not all of the bytes are in the file.
  bool Read(const platform::RandomAccessFile& file, std::uint64_t offset,
            std::span<std::uint8_t> to);

 private:
  static constexpr std::size_t kFirstSize = std::size_t{32} << 10;
  static constexpr std::size_t kLargestSize = std::size_t{256} << 10;

  struct Window {
    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t capacity = 0;
    std::uint64_t begin = 0;
    std::size_t size = 0;

    bool Contains(std::uint64_t offset, std::size_t wanted) const {
      return offset >= begin && offset - begin <= size && wanted <= size - (offset - begin);
    }
  };

  const Window* Load(const platform::RandomAccessFile& file, std::uint64_t offset,
                     std::size_t wanted);

  std::array<Window, 2> windows_;
  unsigned latest_ = 0;
  std::size_t next_size_ = kFirstSize;
};

}  // namespace stream::isobmff

#endif  // ISOBMFF_READ_CACHE_H_
