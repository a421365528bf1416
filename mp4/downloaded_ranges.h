// DownloadedRanges: which bytes of a stream are in its restart file. It has no lock.
#ifndef MP4_DOWNLOADED_RANGES_H_
#define MP4_DOWNLOADED_RANGES_H_

#include <cstdint>
#include <map>

// A range of file offsets, from its start up to and not including its end.
struct ByteRange {
  std::uint64_t start = 0;
  std::uint64_t end = 0;

  bool Holds(std::uint64_t offset, std::uint64_t size) const {
    return start <= offset && offset <= end && size <= end - offset;
  }
};

// Ranges of file offsets, each from its start up to and not including its end, ordered by start.
class DownloadedRanges {
 public:
  void Clear() {
    ranges_.clear();
    largest_end_ = 0;
  }

  // Takes the whole of a local file for downloaded. One that is longer than this is not played to
  // its end: kept on purpose.
  void MarkLocalFile() { Set(0, 999'999'999); }

  // Adds a range and merges it with the one before it, and with those behind it that it reaches;
  // the latter only if some range began where it begins then. Kept on purpose: ranges may touch or
  // overlap without being one.
  void Add(std::uint64_t start, std::uint64_t end);

  // Whether one of the ranges holds all of these bytes. For bytes behind all ranges, as a download
  // asks for them piece by piece, it looks at none of the ranges, of which there may be very many.
  bool Hold(std::uint64_t start, std::uint64_t size) const;

  // The first range, empty when there is none. It alone says which samples are there: one that lies
  // in a later range is not looked for, on purpose.
  ByteRange First() const;

  // The end of the first range that holds the byte at `offset`; `offset` itself when none does.
  std::uint64_t EndOfRangeAt(std::uint64_t offset) const;

  const std::map<std::uint64_t, std::uint64_t>& All() const { return ranges_; }

 private:
  void Set(std::uint64_t start, std::uint64_t end);

  std::map<std::uint64_t, std::uint64_t> ranges_;  // start to end
  std::uint64_t largest_end_ = 0;                  // no range ends behind it
};

#endif  // MP4_DOWNLOADED_RANGES_H_
