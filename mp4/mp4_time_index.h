// Mp4TimeIndex: where the samples of a track that were met so far begin, by their time. It has no
// lock.
#ifndef MP4_MP4_TIME_INDEX_H_
#define MP4_MP4_TIME_INDEX_H_

#include <mp4v2/mp4v2.h>

#include <cstdint>
#include <map>
#include <optional>

struct Mp4SamplePlace {
  MP4SampleId id = 1;
  std::uint64_t offset = 0;  // in the file
};

class Mp4TimeIndex {
 public:
  void Clear() { places_.clear(); }
  // A file may claim as many samples as it likes: no more are recorded than a day of film has.
  static constexpr std::uint32_t kMaxPlaces = 1U << 22;

  void Record(std::uint64_t milliseconds, const Mp4SamplePlace& place) {
    if (places_.size() < kMaxPlaces) places_.insert_or_assign(places_.end(), milliseconds, place);
  }

  struct Found {
    Mp4SamplePlace place;
    bool reaches_target;  // false when it is the last one there is, and lies before the target
  };

  // The first sample at or behind `milliseconds`, else the last one; nothing while it is empty.
  std::optional<Found> Find(float milliseconds) const {
    std::optional<Found> found;
    for (const auto& [time, place] : places_) {
      found = Found{place, static_cast<float>(time) >= milliseconds};
      if (found->reaches_target) break;
    }
    return found;
  }

 private:
  std::map<std::uint64_t, Mp4SamplePlace> places_;
};

#endif  // MP4_MP4_TIME_INDEX_H_
