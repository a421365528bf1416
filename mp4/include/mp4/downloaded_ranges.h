// DownloadedRanges: which bytes of a stream are in its restart file. Not thread-safe.
#ifndef MP4_DOWNLOADED_RANGES_H_
#define MP4_DOWNLOADED_RANGES_H_

#include <cstdint>
#include <map>

namespace stream {

// A range of file offsets. `end` is exclusive.
struct ByteRange {
  std::uint64_t start = 0;
  std::uint64_t end = 0;

  bool Contains(std::uint64_t offset, std::uint64_t size) const {
    return start <= offset && offset <= end && size <= end - offset;
  }
};

// Ranges of file offsets, ordered by start.
class DownloadedRanges {
 public:
  void Clear() {
    ranges_.clear();
    largest_end_ = 0;
  }

  // Marks a local file as downloaded, as if it had 999,999,999 bytes. The rest of a longer file is
  // not played. Kept for compatibility.
  void MarkLocalFile() { Set(0, 999'999'999); }

  // Adds a range. If it begins within the first range or at its end, the two are merged. Later
  // ranges that it reaches are merged only if a range with the same start exists already. So ranges
  // may touch or overlap without being merged. Kept for compatibility.
  void Add(std::uint64_t start, std::uint64_t end);

  // Returns whether one of the ranges contains all of these bytes. For bytes after all ranges, the
  // usual case during a download, it returns false without a search, since there may be very many
  // ranges.
  bool Contains(std::uint64_t start, std::uint64_t size) const;

  // The first range; empty if there is none. It alone decides which samples are available: a sample
  // in a later range is not looked for. Kept for compatibility.
  ByteRange First() const;

  // The end of the first range that contains the byte at `offset`; `offset` itself if none does.
  std::uint64_t EndOfRangeAt(std::uint64_t offset) const;

  const std::map<std::uint64_t, std::uint64_t>& All() const { return ranges_; }

 private:
  void Set(std::uint64_t start, std::uint64_t end);

  std::map<std::uint64_t, std::uint64_t> ranges_;  // start to end
  std::uint64_t largest_end_ = 0;                  // no range ends after it
};

}  // namespace stream

#endif  // MP4_DOWNLOADED_RANGES_H_
