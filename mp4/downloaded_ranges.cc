#include "mp4/downloaded_ranges.h"

#include <algorithm>
#include <iterator>

namespace stream {

void DownloadedRanges::Add(std::uint64_t start, std::uint64_t end) {
  const auto first = ranges_.begin();
  if (first != ranges_.end() && first->first <= start && start <= first->second) {
    start = first->first;
    end = std::max(end, first->second);
  }
  if (const auto same = ranges_.find(start); same != ranges_.end()) {
    auto next = std::next(same);
    while (next != ranges_.end() && next->first <= end) {
      end = std::max(end, next->second);
      next = ranges_.erase(next);
    }
  }
  Set(start, end);
}

void DownloadedRanges::Set(std::uint64_t start, std::uint64_t end) {
  ranges_[start] = end;
  largest_end_ = std::max(largest_end_, end);
}

bool DownloadedRanges::Contains(std::uint64_t start, std::uint64_t size) const {
  if (!ByteRange{0, largest_end_}.Contains(start, size)) return false;
  return std::any_of(ranges_.begin(), ranges_.end(), [start, size](const auto& range) {
    return ByteRange{range.first, range.second}.Contains(start, size);
  });
}

ByteRange DownloadedRanges::First() const {
  return ranges_.empty() ? ByteRange() : ByteRange{ranges_.begin()->first, ranges_.begin()->second};
}

std::uint64_t DownloadedRanges::EndOfRangeAt(std::uint64_t offset) const {
  for (const auto& [start, end] : ranges_) {
    if (start <= offset && offset < end) return end;
  }
  return offset;
}

}  // namespace stream
