#include "hls/sequence_memory.h"

#include <utility>

namespace stream {

bool SequenceMemory::Contains(const NumberedSegment& pair) const {
  const auto found = by_number_.find(pair.number);
  return found != by_number_.end() && found->second->key->first == pair.key;
}

std::optional<std::int64_t> SequenceMemory::NumberOf(std::string_view key) const {
  const auto found = keys_.find(key);
  return found == keys_.end() ? std::nullopt : std::optional(found->second.number);
}

std::optional<std::int64_t> SequenceMemory::ReusedAt(std::string_view key) const {
  const auto found = keys_.find(key);
  return found == keys_.end() ? std::nullopt : found->second.reused_at;
}

void SequenceMemory::Record(const NumberedSegment& pair) {
  const auto known = by_number_.find(pair.number);
  if (known != by_number_.end()) {
    pairs_.splice(pairs_.end(), pairs_, known->second);
    if (known->second->key->first == pair.key) return;
  }
  auto key = keys_.find(pair.key);
  if (key == keys_.end()) key = keys_.emplace(pair.key, KeyState{pair.number}).first;
  key->second.number = pair.number;
  ++key->second.pairs;
  if (known != by_number_.end()) {
    Release(std::exchange(known->second->key, key));
  } else {
    by_number_.emplace(pair.number, pairs_.insert(pairs_.end(), {pair.number, key}));
  }
}

void SequenceMemory::RecordReused(const NumberedSegment& pair) {
  Record(pair);
  keys_.find(pair.key)->second.reused_at = pair.number;
}

// The key stays until Trim: the same window may list it again under another number.
void SequenceMemory::Release(Keys::iterator key) {
  if (--key->second.pairs == 0) released_.push_back(key->first);
}

void SequenceMemory::Trim(std::size_t limit) {
  while (pairs_.size() > limit) {
    Release(pairs_.front().key);
    by_number_.erase(pairs_.front().number);
    pairs_.pop_front();
  }
  for (const std::string& name : released_) {
    const auto key = keys_.find(name);
    if (key != keys_.end() && key->second.pairs == 0) keys_.erase(key);
  }
  released_.clear();
}

}  // namespace stream
