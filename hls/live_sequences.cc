#include "hls/live_sequences.h"

#include <algorithm>

#include "hls/segment_states.h"

NeverDestroyed<LiveSequences> g_liveSequences;

SequenceLedger& LiveSequences::LedgerOf(const std::string& source) {
  const auto known = std::find_if(ledgers_.begin(), ledgers_.end(),
                                  [&source](const auto& row) { return row.first == source; });
  if (known != ledgers_.end()) {
    ledgers_.splice(ledgers_.begin(), ledgers_, known);
  } else {
    ledgers_.emplace_front(source, SequenceLedger());
    if (ledgers_.size() > kRememberedSources) ledgers_.pop_back();
  }
  return ledgers_.front().second;
}

void LiveSequences::ForgetOthers() {
  if (!ledgers_.empty()) ledgers_.resize(1);
}

SequenceWindow WindowOf(const M3u8Table& entries, std::int64_t media_sequence) {
  SequenceWindow window{media_sequence, {}};
  auto& segments = window.segments;
  for (auto row = entries.end(); row != entries.begin();) {
    const M3u8Entry& entry = (--row)->second;
    if (entry.number == kNoSequenceNumber || !IsSegment(entry)) continue;
    const bool is_earlier_text = entry.number < media_sequence ||
                                 (!segments.empty() && entry.number >= segments.back().number);
    if (is_earlier_text || segments.size() == kMostCompared) break;
    segments.push_back({entry.number, SegmentKeyIn(entry.uri)});
  }
  std::reverse(segments.begin(), segments.end());
  return window;
}
