#include "hls/segment_queue.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <mutex>
#include <set>
#include <utility>

#include "common/clock.h"
#include "common/console.h"
#include "common/format_text.h"
#include "hls/hls_state.h"
#include "hls/live_sequences.h"
#include "hls/playlist_fetch.h"
#include "hls/segment_states.h"

namespace {

// The segment thread remembers at least this many segments.
constexpr std::size_t kRememberedSegments = 1000;

// Number of segments that the live playlist lists. Guarded by g_segmentQueueMutex.
std::size_t g_listedSegments = 0;

// Set when an on-demand playlist was queued. Wakes the segment thread even if the playlist lists
// nothing. Guarded by g_segmentQueueMutex.
bool g_onDemandQueued = false;

// Counts the restarts of the live stream. Guarded by g_playlistMutex.
std::uint64_t g_sequenceEpoch = 0;

bool ListsSegments(const M3u8Table& entries) {
  return std::any_of(entries.begin(), entries.end(),
                     [](const auto& row) { return IsSegment(row.second); });
}

// Identifies a variant by its address without the query, in which tokens may change, and by its
// bandwidth: the addresses of two variants may differ only in the query.
std::string SourceOf(const M3u8Entry& variant) {
  return MakeSegmentKey(variant.uri) + '\n' + std::to_string(variant.bandwidth);
}

void ConsoleCount(const char* tag, std::size_t count) {
  // No line break. Kept for compatibility.
  ConsoleText(FormatText("%s:%d", tag, static_cast<int>(count)));
}

std::size_t RoomInQueue() {
  const std::lock_guard lock(g_segmentQueueMutex);
  return kMaxWaitingSegments - std::min(kMaxWaitingSegments, g_segmentQueue->size());
}

// Forgets all replaced segments that are not in `waiting`. The segment thread has finished every
// segment that it took before. Requires g_segmentQueueMutex.
void ForgetReplacedBut(const std::vector<QueuedSegment>& waiting) {
  if (g_replacedSegments->empty()) return;
  std::set<std::pair<std::uint64_t, std::string>> pending;
  for (const QueuedSegment& segment : waiting) {
    const auto replaced = g_replacedSegments->find({segment.epoch, segment.identity});
    if (replaced != g_replacedSegments->end()) pending.insert(*replaced);
  }
  *g_replacedSegments = std::move(pending);
}

// Makes the segment with a reused key count as new, and marks the former one as replaced: the
// server now serves the new segment at that address.
void Replace(const ReusedKey& reused) {
  ForgetSegment(reused.key);
  const std::lock_guard lock(g_segmentQueueMutex);
  if (g_replacedSegments->size() >= kMaxWaitingSegments) return;
  g_replacedSegments->emplace(g_sequenceEpoch, reused.former_identity);
}

// Processes one playlist text and queues its new segments.
class PlaylistPass {
 public:
  PlaylistPass(HlsPipeline& pipeline, const std::string& url) : pipeline_(pipeline), url_(url) {}

  // Returns whether `text` is a playlist.
  bool Run(const std::string& text);

 private:
  bool ParseTop(const std::string& text);
  void QueueListed();
  bool ParseVariant(const M3u8Entry& variant);
  bool FollowSequence(const std::string& source, std::int64_t first, const M3u8Table& entries);
  void QueueVariant(const M3u8Entry& variant);
  bool QueueIfNew(const M3u8Entry& segment, SegmentKeys& listed_keys);
  void NoteListed() const;
  bool HandToSegmentThread();
  std::string IdentityOf(const std::string& uri) const;
  bool IsOver() const { return is_late_copy_ || !pipeline_.running.load(); }

  HlsPipeline& pipeline_;
  const std::string& url_;
  M3u8Table top_;
  M3u8Table variant_segments_;
  const SequenceLedger* ledger_ = nullptr;  // of the first playlist that lists segments
  bool is_late_copy_ = false;               // if set, nothing in this playlist is played
  // Views into the addresses in the two tables above.
  SegmentKeys top_keys_;
  SegmentKeys variant_keys_;
  std::vector<QueuedSegment> fresh_;
  const std::size_t room_ = RoomInQueue();
};

// Checks the media sequence of the first playlist in this pass that lists segments; later ones are
// not checked. After a restart every segment is new, whatever its name. A segment whose name was
// reused is new too. Returns false if the playlist is a late copy, which must not be played.
bool PlaylistPass::FollowSequence(const std::string& source, std::int64_t first,
                                  const M3u8Table& entries) {
  if (ledger_ != nullptr || !ListsSegments(entries)) return true;
  SequenceLedger& ledger = g_liveSequences->LedgerOf(source);
  const SequenceVerdict verdict = ledger.Follow(WindowOf(entries, first));
  ledger_ = &ledger;
  is_late_copy_ = verdict == SequenceVerdict::kLateCopy;
  if (verdict == SequenceVerdict::kRestart) {
    g_liveSequences->ForgetOthers();
    ForgetAllSegments();
    ++g_sequenceEpoch;
  }
  for (const ReusedKey& reused : ledger.ReusedKeys()) Replace(reused);
  return !is_late_copy_;
}

std::string PlaylistPass::IdentityOf(const std::string& uri) const {
  const std::string_view key = SegmentKeyIn(uri);
  return ledger_ == nullptr ? std::string(key) : ledger_->IdentityOf(key);
}

bool PlaylistPass::ParseTop(const std::string& text) {
  M3u8Header header;
  std::int64_t mediaSequence = kNoSequenceNumber;
  if (!ParseM3u8(header, url_, text, mediaSequence, top_)) return false;
  ConsoleCount("QUEUEED1", top_.size());
  FollowSequence(url_, mediaSequence, top_);
  return true;
}

// Adds the segments in g_variantText. If the text has no header, its segments are dropped, but the
// text stays and the next body is appended to it. Kept for compatibility.
bool PlaylistPass::ParseVariant(const M3u8Entry& variant) {
  M3u8Header header;
  std::int64_t mediaSequence = kNoSequenceNumber;
  M3u8Table entries;
  if (!ParseM3u8(header, url_, *g_variantText, mediaSequence, entries)) return false;
  g_variantText->clear();
  const bool is_played = FollowSequence(SourceOf(variant), mediaSequence, entries);
  variant_segments_.merge(entries);
  ConsoleCount("QUEUEED2", variant_segments_.size());
  return is_played;
}

// Records the segment as listed, and queues it if it is new. Returns whether it was queued.
bool PlaylistPass::QueueIfNew(const M3u8Entry& segment, SegmentKeys& listed_keys) {
  listed_keys.insert(SegmentKeyIn(segment.uri));
  if (fresh_.size() >= room_ || !AddSegmentIfNew(segment.uri, kSegmentQueued)) return false;
  fresh_.push_back({segment, IdentityOf(segment.uri), g_sequenceEpoch});
  return true;
}

void PlaylistPass::QueueVariant(const M3u8Entry& variant) {
  if (!FetchVariant(pipeline_, variant.uri) || !ParseVariant(variant)) return;
  for (const auto& [index, segment] : variant_segments_) {
    if (!pipeline_.running.load()) return;
    if (IsSegment(segment) && QueueIfNew(segment, variant_keys_)) {
      ConsoleLine("[QUEUEED]: " + segment.uri);
    }
  }
}

// Ignores a playlist that lists nothing or whose variants could not be fetched: it does not show
// which segments are still listed.
void PlaylistPass::NoteListed() const {
  if (top_keys_.empty() && variant_keys_.empty()) return;
  ForgetDoneSegments(top_keys_, variant_keys_);
  const std::lock_guard lock(g_segmentQueueMutex);
  g_listedSegments = top_keys_.size() + variant_keys_.size();
}

// Queues all new segments at once, so that the segment thread gets them as one batch. Returns false
// if there are none.
bool PlaylistPass::HandToSegmentThread() {
  if (fresh_.empty()) return false;
  {
    const std::lock_guard lock(g_segmentQueueMutex);
    std::move(fresh_.begin(), fresh_.end(), std::back_inserter(*g_segmentQueue));
  }
  WakeHlsTasks();
  return true;
}

bool PlaylistPass::Run(const std::string& text) {
  if (!ParseTop(text)) return false;
  QueueListed();
  return true;
}

void PlaylistPass::QueueListed() {
  for (const auto& [key, entry] : top_) {
    if (IsOver()) return;
    if (IsSegment(entry)) {
      QueueIfNew(entry, top_keys_);
    } else {
      QueueVariant(entry);
    }
  }
  if (IsOver()) return;  // after a stop, the segments of a variant may be incomplete
  NoteListed();
  // Compares with the segments of variants only. If the playlist lists segments itself, all its
  // downloaded segments are forgotten and queued again at the next refresh, where the segment
  // thread skips them. Kept for compatibility.
  if (HandToSegmentThread()) RemoveStaleSegments(variant_keys_, kSegmentDownloaded);
}

}  // namespace

bool QueueSegmentsFromPlaylist(HlsPipeline& pipeline, const std::string& playlistUrl,
                               const std::string& text) {
  const std::lock_guard lock(g_playlistMutex);
  return PlaylistPass(pipeline, playlistUrl).Run(text);
}

void QueueAllSegments(HlsPipeline& pipeline, const M3u8Table& entries) {
  ConsoleCount("QUEUEED3", entries.size());
  std::vector<QueuedSegment> all;
  all.reserve(entries.size());
  for (const auto& [index, segment] : entries) {
    if (!pipeline.running.load()) return;
    pipeline.listedDuration += segment.duration;
    all.push_back({segment, segment.uri, 0});  // identity: the full address, query included
  }
  {
    const std::lock_guard lock(g_segmentQueueMutex);
    std::move(all.begin(), all.end(), std::back_inserter(*g_segmentQueue));
    g_onDemandQueued = true;
  }
  WakeHlsTasks();
}

void ClearSegmentQueue() {
  const std::lock_guard lock(g_segmentQueueMutex);
  *g_segmentQueue = {};  // releases the memory
  g_replacedSegments->clear();
  g_listedSegments = 0;
  g_onDemandQueued = false;
}

std::vector<QueuedSegment> TakeQueuedSegments(HlsPipeline& pipeline, SegmentHistory& history) {
  std::vector<QueuedSegment> waiting;
  std::size_t limit = 0;
  {
    std::unique_lock lock(g_segmentQueueMutex);
    CurrentClock().Wait(*g_segmentQueueCond, lock, [&pipeline] {
      return !g_segmentQueue->empty() || g_onDemandQueued || !pipeline.running.load();
    });
    waiting.swap(*g_segmentQueue);
    ForgetReplacedBut(waiting);
    g_onDemandQueued = false;
    limit = std::max(kRememberedSegments, g_listedSegments);
  }
  std::vector<QueuedSegment> batch;
  for (QueuedSegment& segment : waiting) {
    if (!pipeline.running.load()) break;
    if (std::exchange(history.epoch, segment.epoch) != segment.epoch) history.taken.Forget();
    if (!history.taken.Take(segment.identity, limit)) {
      RecordSegmentDone(segment.entry.uri);
      continue;
    }
    pipeline.queuedDuration += segment.entry.duration;
    batch.push_back(std::move(segment));
  }
  return batch;
}

bool IsReplaced(const QueuedSegment& segment) {
  const std::lock_guard lock(g_segmentQueueMutex);
  return g_replacedSegments->contains({segment.epoch, segment.identity});
}

void PauseBetweenRefreshes(const HlsPipeline& pipeline) {
  constexpr std::chrono::milliseconds kInterval{1000};
  std::unique_lock lock(g_segmentQueueMutex);
  CurrentClock().WaitFor(*g_segmentQueueCond, lock, kInterval,
                         [&pipeline] { return !pipeline.running.load(); });
}
