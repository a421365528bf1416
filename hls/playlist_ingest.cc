#include "hls/playlist_ingest.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>
#include <vector>

#include "common/console.h"
#include "common/format_text.h"
#include "hls/playlist_fetch.h"

namespace stream {
namespace {

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

// Processes one text of a live playlist and queues its new segments.
class PlaylistIngest {
 public:
  PlaylistIngest(HlsTaskState& hls, const std::string& url) : hls_(hls), url_(url) {}

  // Returns whether `text` is a playlist.
  bool Run(const std::string& text) EXCLUDES(hls_.stream.playlist_mutex);

 private:
  bool ParseTop(const std::string& text);
  void QueueListed() REQUIRES(hls_.stream.playlist_mutex);
  bool ParseVariant(const M3u8Entry& variant) REQUIRES(hls_.stream.playlist_mutex);
  void FollowWindow(const std::string& source, std::int64_t first, const M3u8Table& entries);
  void QueueVariant(const M3u8Entry& variant) REQUIRES(hls_.stream.playlist_mutex);
  bool QueueIfNew(const M3u8Entry& segment, SegmentKeys& listed_keys);
  void Finish();
  bool ShouldStop() const { return is_late_copy_ || !hls_.running.load(); }

  HlsTaskState& hls_;
  const std::string& url_;
  M3u8Table top_;
  M3u8Table variant_segments_;
  std::string source_;         // the first playlist that lists segments
  bool is_late_copy_ = false;  // if set, nothing in this playlist is played
  // Views into the addresses in the two tables above.
  SegmentKeys top_keys_;
  SegmentKeys variant_keys_;
  std::vector<QueuedSegment> new_segments_;
  std::size_t free_slots_ = 0;
};

bool PlaylistIngest::Run(const std::string& text) {
  const MutexLock lock(hls_.stream.playlist_mutex);
  free_slots_ = hls_.stream.FreeSlots();
  if (!ParseTop(text)) return false;
  QueueListed();
  return true;
}

bool PlaylistIngest::ParseTop(const std::string& text) {
  M3u8Header header;
  std::int64_t media_sequence = kNoSequenceNumber;
  if (!ParseM3u8(header, url_, text, media_sequence, top_)) return false;
  ConsoleCount("QUEUEED1", top_.size());
  FollowWindow(url_, media_sequence, top_);
  return true;
}

// Only the first playlist that lists segments is classified; the others list the same stream.
void PlaylistIngest::FollowWindow(const std::string& source, std::int64_t first,
                                  const M3u8Table& entries) {
  if (!source_.empty() || !ListsSegments(entries)) return;
  source_ = source;
  is_late_copy_ =
      hls_.stream.ledger.FollowWindow(source, first, entries) == WindowVerdict::kLateCopy;
}

void PlaylistIngest::QueueListed() {
  for (const auto& [key, entry] : top_) {
    if (ShouldStop()) return;
    if (IsSegment(entry)) {
      QueueIfNew(entry, top_keys_);
    } else {
      QueueVariant(entry);
    }
  }
  if (!ShouldStop()) Finish();  // after a stop, the segments of a variant may be incomplete
}

// Records the segment as listed, and queues it if it is new. Returns whether it was queued.
bool PlaylistIngest::QueueIfNew(const M3u8Entry& segment, SegmentKeys& listed_keys) {
  listed_keys.insert(SegmentKeyIn(segment.uri));
  if (new_segments_.size() >= free_slots_) return false;
  if (!hls_.stream.ledger.AddSegmentIfNew(segment.uri, kSegmentQueued)) return false;
  new_segments_.push_back(hls_.stream.ledger.Identify(segment, source_));
  return true;
}

void PlaylistIngest::QueueVariant(const M3u8Entry& variant) {
  if (!FetchVariant(hls_, variant.uri) || !ParseVariant(variant)) return;
  for (const auto& [index, segment] : variant_segments_) {
    if (!hls_.running.load()) return;
    if (IsSegment(segment) && QueueIfNew(segment, variant_keys_)) {
      ConsoleLine("[QUEUEED]: " + segment.uri);
    }
  }
}

// Adds the segments in g_variantText to variant_segments_. If the text has no header, its segments
// are dropped, but the text stays and the next body is appended to it. Kept for compatibility.
// Returns whether to queue them.
bool PlaylistIngest::ParseVariant(const M3u8Entry& variant) {
  M3u8Header header;
  std::int64_t media_sequence = kNoSequenceNumber;
  M3u8Table entries;
  if (!ParseM3u8(header, url_, hls_.stream.g_variantText, media_sequence, entries)) return false;
  hls_.stream.g_variantText.clear();
  FollowWindow(SourceOf(variant), media_sequence, entries);
  variant_segments_.merge(entries);
  ConsoleCount("QUEUEED2", variant_segments_.size());
  return !is_late_copy_;
}

// Queues all new segments at once and forgets those that are no longer listed.
void PlaylistIngest::Finish() {
  // A playlist that lists nothing, or whose variants could not be fetched, does not show which
  // segments are still listed.
  const bool lists_nothing = top_keys_.empty() && variant_keys_.empty();
  if (!lists_nothing) hls_.stream.ledger.RecordListed(top_keys_, variant_keys_);
  if (new_segments_.empty()) return;
  hls_.stream.Queue(std::move(new_segments_), false);
  // Compares with the segments of variants only. If the playlist lists segments itself, all its
  // downloaded segments are forgotten and queued again at the next refresh, where the segment
  // thread skips them. Kept for compatibility.
  hls_.stream.ledger.RemoveStaleSegments(variant_keys_, kSegmentDownloaded);
}

}  // namespace

bool QueueSegmentsFromPlaylist(HlsTaskState& hls, const std::string& playlistUrl,
                               const std::string& text) {
  return PlaylistIngest(hls, playlistUrl).Run(text);
}

void QueueAllSegments(HlsTaskState& hls, const M3u8Table& entries) {
  ConsoleCount("QUEUEED3", entries.size());
  std::vector<QueuedSegment> all;
  all.reserve(entries.size());
  for (const auto& [index, segment] : entries) {
    if (!hls.running.load()) return;
    hls.listedDuration += segment.duration;
    all.push_back({segment, segment.uri, 0});  // identity: the full address, query included
  }
  hls.stream.Queue(std::move(all), true);
}

}  // namespace stream
