// Mp4TimeIndex: the samples of a track that were found so far, by their time, with their file
// offsets. Not thread-safe.
#ifndef MP4_MP4_TIME_INDEX_H_
#define MP4_MP4_TIME_INDEX_H_

#include <mp4v2/mp4v2.h>

#include <cstdint>
#include <map>
#include <optional>

namespace stream {

struct Mp4SampleLocation {
  MP4SampleId id = 1;
  std::uint64_t offset = 0;  // in the file
};

class Mp4TimeIndex {
 public:
  // A file may claim any number of samples. At most this many are recorded, as many as a day of
  // film has.
  static constexpr std::uint32_t kMaxEntries = 1U << 22;

  void Record(std::uint64_t milliseconds, const Mp4SampleLocation& location) {
    if (entries_.size() < kMaxEntries)
      entries_.insert_or_assign(entries_.end(), milliseconds, location);
  }

  struct Found {
    Mp4SampleLocation location;
    bool reaches_target;  // false if it is the last known sample and is before the target
  };

  // The first sample at or after `milliseconds`, or else the last one; nullopt if the index is
  // empty.
  std::optional<Found> Find(float milliseconds) const {
    std::optional<Found> found;
    for (const auto& [time, location] : entries_) {
      found = Found{location, static_cast<float>(time) >= milliseconds};
      if (found->reaches_target) break;
    }
    return found;
  }

 private:
  std::map<std::uint64_t, Mp4SampleLocation> entries_;
};

}  // namespace stream

#endif  // MP4_MP4_TIME_INDEX_H_
