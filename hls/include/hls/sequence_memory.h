// SequenceMemory: remembers which segment a live playlist listed under which media sequence number.
// A pair is a number and the key of a segment (segment_ledger.h). Trim limits the size: it forgets
// the least recently listed pairs. Not thread-safe.
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

namespace stream {

struct NumberedSegment {
  std::int64_t number;
  std::string_view key;  // borrowed from the caller during the call
};

class SequenceMemory {
 public:
  // Returns whether the key of the pair is the last one listed under its number.
  bool Contains(const NumberedSegment& pair) const;

  // The newest number of a key; nullopt if the key is not remembered.
  std::optional<std::int64_t> NumberOf(std::string_view key) const;

  // The number under which the key was recorded as reused; nullopt if it was not.
  std::optional<std::int64_t> ReusedAt(std::string_view key) const;

  // Records a listed pair. A pair that is already remembered becomes the most recently listed one.
  void Record(const NumberedSegment& pair);

  // Records a pair whose key names another segment from now on.
  void RecordReused(const NumberedSegment& pair);

  // Forgets the least recently listed pairs until `limit` are left, and the keys without a pair. No
  // other function forgets keys.
  void Trim(std::size_t limit);

  std::size_t Size() const { return by_number_.size(); }

 private:
  struct KeyState {
    std::int64_t number;
    std::optional<std::int64_t> reused_at = {};
    std::size_t pairs = 0;  // number of pairs with this key
  };
  using Keys = std::map<std::string, KeyState, std::less<>>;

  struct Pair {
    std::int64_t number;
    Keys::iterator key;
  };
  using Pairs = std::list<Pair>;

  void Release(Keys::iterator key);

  Keys keys_;
  Pairs pairs_;  // most recently listed last
  std::map<std::int64_t, Pairs::iterator> by_number_;
  std::vector<std::string> released_;  // keys whose last pair was released
};

}  // namespace stream

#endif  // HLS_SEQUENCE_MEMORY_H_
