#include "isobmff/read_cache.h"

#include <algorithm>
#include <cstring>

namespace stream::isobmff {

bool ReadCache::Read(const platform::RandomAccessFile& file, std::uint64_t offset,
                     std::span<std::uint8_t> to) {
  if (to.empty()) return true;
  const Window* window = &windows_[latest_];
  if (!window->Contains(offset, to.size())) {
    window = &windows_[latest_ ^ 1];
    if (!window->Contains(offset, to.size())) {
      if (to.size() >= next_size_ / 2)
        return file.ReadAt(offset, to.data(), to.size()) == to.size();
      window = Load(file, offset, to.size());
      if (window == nullptr) return false;
    }
  }
  std::memcpy(to.data(), window->bytes.get() + (offset - window->begin), to.size());
  return true;
}

const ReadCache::Window* ReadCache::Load(const platform::RandomAccessFile& file,
                                         std::uint64_t offset, std::size_t wanted) {
  latest_ ^= 1;
  Window& window = windows_[latest_];
  if (window.capacity < next_size_) {
    window.size = 0;
    window.capacity = 0;
    window.bytes = std::make_unique_for_overwrite<std::uint8_t[]>(next_size_);
    window.capacity = next_size_;
  }
  window.begin = offset;
  window.size = file.ReadAt(offset, window.bytes.get(), window.capacity);
  next_size_ = std::min(next_size_ * 2, kLargestSize);
  return window.Contains(offset, wanted) ? &window : nullptr;
}

}  // namespace stream::isobmff
