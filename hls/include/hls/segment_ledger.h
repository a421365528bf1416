// SegmentLedger: knows all segments of a stream. Is a segment new? Is it done? Did the live window
// begin again?
//
// A live playlist lists the same segments again and again, but each is played once. A segment is
// identified by its key, and where media sequence numbers can be trusted by its number too
// (window_classifier.h). The playlist thread reports what is listed and asks what is new; the
// segment thread reports what is done and asks what it took before. All tables are limited to the
// segments currently listed or to a fixed count.
//
// Thread-safe. Prints the segments that RemoveStaleSegments forgets and nothing else.
#ifndef HLS_SEGMENT_LEDGER_H_
#define HLS_SEGMENT_LEDGER_H_

#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hls/playlist/m3u8_playlist.h"
#include "hls/window_classifier.h"
#include "platform/mutex.h"

namespace stream {

// Capacity of the queue. Segments of a live playlist that do not fit wait for a later refresh.
inline constexpr std::size_t kMaxQueuedSegments = 500'000;

// In a longer playlist only this many segments are compared, the newest ones, which last for days.
// For older segments the keys alone decide.
inline constexpr std::size_t kMaxCompared = 100'000;

inline constexpr std::int32_t kSegmentQueued = 0;
inline constexpr std::int32_t kSegmentDownloaded = 1;

// The key that identifies a segment: the address without its query. An address that begins with "?"
// is kept whole.
std::string MakeSegmentKey(const std::string& uri);

// The key as a view into `uri`, and a set of such keys. For playlists of a million segments, which
// outlive the keys.
std::string_view SegmentKeyIn(std::string_view uri);
using SegmentKeys = std::set<std::string_view>;

// Returns whether an entry of a live playlist or of one of its variants is a segment: its address
// contains ".ts".
bool IsSegment(const M3u8Entry& entry);

// Returns the numbered segments of a live playlist, starting at `media_sequence`. The table may
// begin with the rest of an earlier text, which is not part of the window. The keys are views into
// `entries`.
PlaylistWindow WindowOf(const M3u8Table& entries, std::int64_t media_sequence);

// A segment that is queued for the segment thread.
struct QueuedSegment {
  M3u8Entry entry;
  std::string identity;     // the segment thread skips an identity that it took before
  std::uint64_t epoch = 0;  // number of stream restarts before it was queued
};

// Identities of segments, limited in number: the least recently seen ones are forgotten.
// Not thread-safe.
class TakenSegments {
 public:
  // Returns false if the identity is known. Otherwise adds it; at most `limit` + 1 are kept.
  bool InsertIfNew(const std::string& identity, std::size_t limit);

  void Clear();
  std::size_t Size() const { return positions_.size(); }

 private:
  using Order = std::list<std::string>;  // most recently seen last

  Order order_;
  std::map<std::string, Order::iterator> positions_;
};

// What one run of a segment thread has taken so far. That thread owns it.
struct SegmentHistory {
  TakenSegments taken;
  std::uint64_t epoch = 0;  // `taken` belongs to this epoch
  std::size_t limit = 0;    // of `taken`, for the current batch
};

class SegmentLedger {
 public:
  // Classifies the current window of a live playlist, which starts at `media_sequence`. A restart
  // makes every segment new, whatever its name is. If the window reuses keys for other segments,
  // those are new too and the former ones count as replaced.
  WindowVerdict FollowWindow(const std::string& source, std::int64_t media_sequence,
                             const M3u8Table& entries) EXCLUDES(mutex_);

  // Adds a segment in the given state. Returns false, and changes nothing, if the segment is known.
  bool AddSegmentIfNew(const std::string& uri, std::int32_t state) EXCLUDES(mutex_);

  // Identifies a segment among all that have or had its key. `source` is the playlist that was
  // passed to FollowWindow; empty if there was none, in which case the key alone counts.
  QueuedSegment Identify(const M3u8Entry& segment, const std::string& source) EXCLUDES(mutex_);

  // Records which segments are listed now. Forgets, without a console line, every segment that was
  // finished without a download (RecordNotDownloaded) and is no longer listed, neither by the
  // top-level playlist nor by its variants.
  void RecordListed(const SegmentKeys& top_keys, const SegmentKeys& variant_keys = {})
      EXCLUDES(mutex_);

  // Forgets every segment in the given state that is not among the current ones, and logs a console
  // line for each.
  void RemoveStaleSegments(const SegmentKeys& current_keys, std::int32_t state) EXCLUDES(mutex_);

  // Begins a batch of the segment thread. `waiting` is all that was queued: replaced segments that
  // are not among it are forgotten, since the segment thread has finished every segment that it
  // took before.
  void BeginBatch(SegmentHistory& history, const std::vector<QueuedSegment>& waiting)
      EXCLUDES(mutex_);

  // Returns whether a segment of the batch was not taken before, and records it as taken. If it was
  // taken before, records that it is finished without a download. For an on-demand playlist, whose
  // segments are identified by their whole address, this alone decides what is new.
  bool TakeIfNew(SegmentHistory& history, const QueuedSegment& segment) EXCLUDES(mutex_);

  // Returns whether the address of a segment from the queue serves another segment now.
  bool IsReplaced(const QueuedSegment& segment) EXCLUDES(mutex_);

  // Sets the state of a segment. Does nothing if the segment is not known.
  void SetSegmentState(const std::string& uri, std::int32_t state) EXCLUDES(mutex_);

  // Records that the segment thread has finished a segment without downloading it: it was skipped,
  // perhaps since it had been queued twice, or its download failed. Its state stays kSegmentQueued,
  // but RemoveStaleSegments is called for kSegmentDownloaded only, so without this a live stream
  // would leave one entry for every such segment.
  void RecordNotDownloaded(const std::string& uri) EXCLUDES(mutex_);

  // Forgets all segments. The epoch stays: a segment thread may keep its history.
  void Clear() EXCLUDES(mutex_);

  // The sizes of the tables, for tests of their limits.
  struct Sizes {
    std::size_t known = 0;       // segments with a state
    std::size_t replaced = 0;    // segments
    std::size_t playlists = 0;   // with remembered numbers
    std::size_t remembered = 0;  // numbers of the most recent of these playlists
  };
  Sizes CurrentSizes() EXCLUDES(mutex_);

 private:
  void ForgetSegments() REQUIRES(mutex_);
  void Replace(const ReusedKey& reused) REQUIRES(mutex_);

  Mutex mutex_;

  // The state of each segment, by its key. The name is fixed. Kept for compatibility.
  std::map<std::string, std::int32_t> g_segmentStates GUARDED_BY(mutex_);
  // Keys of segments that were finished without a download.
  std::set<std::string> not_downloaded_ GUARDED_BY(mutex_);

  WindowClassifiers classifiers_ GUARDED_BY(mutex_);
  std::uint64_t epoch_ GUARDED_BY(mutex_) = 0;  // number of restarts of the live stream

  // Epoch and identity of pending segments whose address serves another segment now. They are
  // skipped, since the other segment is queued too.
  std::set<std::pair<std::uint64_t, std::string>> replaced_ GUARDED_BY(mutex_);

  std::size_t listed_ GUARDED_BY(mutex_) = 0;  // number of segments that the live playlist lists
};

}  // namespace stream

#endif  // HLS_SEGMENT_LEDGER_H_
