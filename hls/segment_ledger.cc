#include "hls/segment_ledger.h"

#include <algorithm>

#include "common/console.h"

namespace stream {
std::string MakeSegmentKey(const std::string& uri) { return std::string(SegmentKeyIn(uri)); }

std::string_view SegmentKeyIn(std::string_view uri) {
  const std::size_t query = uri.find('?');
  return query == 0 ? uri : uri.substr(0, query);
}

bool IsSegment(const M3u8Entry& entry) { return entry.uri.find(".ts") != std::string::npos; }

PlaylistWindow WindowOf(const M3u8Table& entries, std::int64_t media_sequence) {
  PlaylistWindow window{media_sequence, {}};
  auto& segments = window.segments;
  for (auto row = entries.end(); row != entries.begin();) {
    const M3u8Entry& entry = (--row)->second;
    if (entry.number == kNoSequenceNumber || !IsSegment(entry)) continue;
    const bool is_earlier_text = entry.number < media_sequence ||
                                 (!segments.empty() && entry.number >= segments.back().number);
    if (is_earlier_text || segments.size() == kMaxCompared) break;
    segments.push_back({entry.number, SegmentKeyIn(entry.uri)});
  }
  std::reverse(segments.begin(), segments.end());
  return window;
}

bool TakenSegments::InsertIfNew(const std::string& identity, std::size_t limit) {
  if (const auto place = positions_.find(identity); place != positions_.end()) {
    order_.splice(order_.end(), order_, place->second);
    return false;
  }
  while (positions_.size() > limit) {
    positions_.erase(order_.front());
    order_.pop_front();
  }
  positions_.emplace(identity, order_.insert(order_.end(), identity));
  return true;
}

void TakenSegments::Clear() {
  positions_.clear();
  order_.clear();
}

WindowVerdict SegmentLedger::FollowWindow(const std::string& source, std::int64_t media_sequence,
                                          const M3u8Table& entries) {
  const PlaylistWindow window = WindowOf(entries, media_sequence);
  const MutexLock lock(mutex_);
  WindowClassifier& classifier = classifiers_.Of(source);
  const WindowVerdict verdict = classifier.Follow(window);
  if (verdict == WindowVerdict::kRestart) {
    classifiers_.ForgetOthers();
    ForgetSegments();
    ++epoch_;
  }
  for (const ReusedKey& reused : classifier.ReusedKeys()) Replace(reused);
  return verdict;
}

// Makes the segment with a reused key count as new, and marks the former one as replaced: the
// server now serves the new segment at that address.
void SegmentLedger::Replace(const ReusedKey& reused) {
  g_segmentStates.erase(reused.key);
  not_downloaded_.erase(reused.key);
  if (replaced_.size() < kMaxQueuedSegments) replaced_.emplace(epoch_, reused.former_identity);
}

bool SegmentLedger::AddSegmentIfNew(const std::string& uri, std::int32_t state) {
  const MutexLock lock(mutex_);
  return g_segmentStates.emplace(MakeSegmentKey(uri), state).second;
}

QueuedSegment SegmentLedger::Identify(const M3u8Entry& segment, const std::string& source) {
  const std::string_view key = SegmentKeyIn(segment.uri);
  const MutexLock lock(mutex_);
  return {segment, source.empty() ? std::string(key) : classifiers_.Of(source).IdentityOf(key),
          epoch_};
}

void SegmentLedger::RecordListed(const SegmentKeys& top_keys, const SegmentKeys& variant_keys) {
  const MutexLock lock(mutex_);
  listed_ = top_keys.size() + variant_keys.size();
  std::erase_if(not_downloaded_,
                [this, &top_keys, &variant_keys](const std::string& key) REQUIRES(mutex_) {
                  if (top_keys.contains(key) || variant_keys.contains(key)) return false;
                  const auto known = g_segmentStates.find(key);
                  if (known != g_segmentStates.end() && known->second == kSegmentQueued) {
                    g_segmentStates.erase(known);
                  }
                  return true;
                });
}

void SegmentLedger::RemoveStaleSegments(const SegmentKeys& current_keys, std::int32_t state) {
  std::vector<std::string> removed;
  {
    const MutexLock lock(mutex_);
    std::erase_if(g_segmentStates, [&](const auto& known) {
      if (known.second != state || current_keys.contains(known.first)) return false;
      removed.push_back(known.first);
      return true;
    });
  }
  for (const std::string& key : removed) ConsoleLine("[REMOVE]: " + key);
}

void SegmentLedger::BeginBatch(SegmentHistory& history, const std::vector<QueuedSegment>& waiting) {
  const MutexLock lock(mutex_);
  history.limit = std::max(WindowClassifier::kRemembered, listed_);
  if (replaced_.empty()) return;
  std::set<std::pair<std::uint64_t, std::string>> pending;
  for (const QueuedSegment& segment : waiting) {
    const auto replaced = replaced_.find({segment.epoch, segment.identity});
    if (replaced != replaced_.end()) pending.insert(*replaced);
  }
  replaced_ = std::move(pending);
}

bool SegmentLedger::TakeIfNew(SegmentHistory& history, const QueuedSegment& segment) {
  if (std::exchange(history.epoch, segment.epoch) != segment.epoch) history.taken.Clear();
  if (history.taken.InsertIfNew(segment.identity, history.limit)) return true;
  RecordNotDownloaded(segment.entry.uri);
  return false;
}

bool SegmentLedger::IsReplaced(const QueuedSegment& segment) {
  const MutexLock lock(mutex_);
  return replaced_.contains({segment.epoch, segment.identity});
}

void SegmentLedger::SetSegmentState(const std::string& uri, std::int32_t state) {
  const MutexLock lock(mutex_);
  const auto known = g_segmentStates.find(MakeSegmentKey(uri));
  if (known != g_segmentStates.end()) known->second = state;
}

void SegmentLedger::RecordNotDownloaded(const std::string& uri) {
  const MutexLock lock(mutex_);
  not_downloaded_.insert(MakeSegmentKey(uri));
}

void SegmentLedger::Clear() {
  const MutexLock lock(mutex_);
  ForgetSegments();
  classifiers_.Clear();
  replaced_.clear();
  listed_ = 0;
}

void SegmentLedger::ForgetSegments() {
  g_segmentStates.clear();
  not_downloaded_.clear();
}

SegmentLedger::Sizes SegmentLedger::CurrentSizes() {
  const MutexLock lock(mutex_);
  return {g_segmentStates.size(), replaced_.size(), classifiers_.Size(),
          classifiers_.SizeOfNewest()};
}

}  // namespace stream
