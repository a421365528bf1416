// WindowClassifier: remembers the media sequence numbers of the segments that a live playlist has
// listed, and uses them to classify each new window of that playlist: is it a late copy, a restart
// or a continuation? A pure comparison of numbers and keys: it prints nothing.
//
// - A late copy lists segments that were listed before, under the same numbers: a cache node lags
//   behind. Nothing in it is played. A restart under the same names and numbers looks like late
//   copies. So they count as a restart once only late copies are served and these have advanced
//   step by step over more than twelve segments.
// - A restart lists known keys under other, smaller numbers: the encoder was restarted with the
//   same names. Everything in it is new.
// - A key that returns under a larger number, after its old number has left the window, names a new
//   segment: the server reuses names in a ring.
// - Any other known key is the same segment as before. An unknown key is a new segment, whatever
//   its number is.
//
// Some servers do not number segments: their number never changes, counts refreshes or is a clock.
// This is detected when the numbers of one segment differ from window to window. From then on the
// keys alone decide, until the numbers have been correct for some time.
//
// Not thread-safe. Numbers are compared within one playlist only.
#ifndef HLS_WINDOW_CLASSIFIER_H_
#define HLS_WINDOW_CLASSIFIER_H_

#include <cstddef>
#include <cstdint>
#include <list>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "hls/sequence_memory.h"

namespace stream {

// The current content of a live playlist: its media sequence number, and its segments by ascending
// number.
struct PlaylistWindow {
  std::int64_t first;
  std::vector<NumberedSegment> segments;
};

// A key that names another segment than before.
struct ReusedKey {
  std::string key;
  std::string former_identity;  // of the segment that it named before
};

enum class WindowVerdict { kGoesOn, kLateCopy, kRestart };

class WindowClassifier {
 public:
  // The segment thread remembers at least this many segments, and never fewer than are listed. A
  // classifier remembers the larger of this and the size of the window, plus this many pairs.
  static constexpr std::size_t kRemembered = 1'000;

  // Judges a window and, unless it is a late copy, remembers it. A window without segments is
  // judged as kGoesOn and changes nothing.
  WindowVerdict Follow(const PlaylistWindow& window);

  // The keys that the window of the last Follow call reuses for new segments.
  const std::vector<ReusedKey>& ReusedKeys() const { return reused_; }

  // Identifies the segment that has this key now; earlier segments with the same key have other
  // identities.
  std::string IdentityOf(std::string_view key) const;

  std::size_t Size() const { return memory_.Size() + previous_.Size(); }

 private:
  // Result of comparing the pairs of a window with the remembered ones.
  struct Comparison {
    std::size_t agreeing = 0;
    std::size_t unknown = 0;       // keys that are not remembered
    std::size_t below = 0;         // keys whose known number is below the window
    std::size_t contradicted = 0;  // keys that the window does not list under their number

    bool IsRenumbered() const { return below + contradicted > 0; }
  };

  // Consecutive late copies.
  struct LateRun {
    std::int64_t begin;  // last number of the first copy
    std::int64_t end;    // last number of the latest copy
    int steps = 0;
  };

  Comparison Compare(const PlaylistWindow& window) const;
  WindowVerdict Judge(const PlaylistWindow& window, const Comparison& found);
  bool IsOfThePreviousRun(const PlaylistWindow& window) const;
  bool HasMovedOnForLong(const PlaylistWindow& window);
  void Forget(bool is_late_run);
  void WeighNumbers(const PlaylistWindow& window, const Comparison& found);
  bool IsReused(const PlaylistWindow& window, const NumberedSegment& pair,
                const Comparison& found) const;
  void Accept(const PlaylistWindow& window, const Comparison& found);

  SequenceMemory memory_;
  SequenceMemory previous_;            // of the run before a restart, kept for a while
  std::optional<std::int64_t> first_;  // start of the last accepted window
  std::optional<LateRun> late_run_;
  int proof_ = 0;  // consecutive windows with correct numbers; negative: not trusted
  std::vector<ReusedKey> reused_;
};

// One classifier for each live playlist of a stream, that is for the top-level playlist and its
// variants. Not thread-safe.
class WindowClassifiers {
 public:
  // The numbers of this many playlists are remembered: the most recently requested ones.
  static constexpr std::size_t kRememberedSources = 8;

  // The classifier of a playlist, empty at first. The reference is valid until another classifier
  // is requested.
  WindowClassifier& Of(const std::string& source);

  // Forgets all playlists but the most recently requested one: after a restart every segment is
  // new.
  void ForgetOthers();

  void Clear() { classifiers_.clear(); }
  std::size_t Size() const { return classifiers_.size(); }

  // Number of pairs remembered for the most recently requested playlist.
  std::size_t SizeOfNewest() const;

 private:
  std::list<std::pair<std::string, WindowClassifier>> classifiers_;  // most recent request first
};

}  // namespace stream

#endif  // HLS_WINDOW_CLASSIFIER_H_
