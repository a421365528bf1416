// SequenceMemory: under which media sequence number a live playlist listed which segment. A pair is
// a number and the key of a segment (segment_states.h). Bounded by Trim, which forgets the pairs
// that were listed longest ago. Used by one thread at a time.
#ifndef HLS_SEQUENCE_MEMORY_H_
#define HLS_SEQUENCE_MEMORY_H_

#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct NumberedSegment {
  std::int64_t number;
  std::string_view key;  // of the caller, for the call
};

class SequenceMemory {
 public:
  // Whether this is the key that was listed last under this number.
  bool Contains(const NumberedSegment& pair) const;

  // The newest number of a key, and none where no pair with this key is remembered.
  std::optional<std::int64_t> NumberOf(std::string_view key) const;

  // The number under which the key was recorded as reused, if it ever was.
  std::optional<std::int64_t> ReusedAt(std::string_view key) const;

  // Records a listed pair. A pair that is remembered only counts as listed again.
  void Record(const NumberedSegment& pair);

  // The same for a key that names another segment from now on.
  void RecordReused(const NumberedSegment& pair);

  // Forgets the pairs that were listed longest ago, up to `limit`. Keys are forgotten here alone.
  void Trim(std::size_t limit);

  std::size_t Size() const { return by_number_.size(); }

 private:
  struct KeyState {
    std::int64_t number;
    std::optional<std::int64_t> reused_at = {};
    std::size_t pairs = 0;  // with this key
  };
  using Keys = std::map<std::string, KeyState, std::less<>>;

  struct Pair {
    std::int64_t number;
    Keys::iterator key;
  };
  using Pairs = std::list<Pair>;

  void Release(Keys::iterator key);

  Keys keys_;
  Pairs pairs_;  // the one listed last at the end
  std::map<std::int64_t, Pairs::iterator> by_number_;
  std::vector<std::string> released_;  // keys that had no pair left
};

#endif  // HLS_SEQUENCE_MEMORY_H_
