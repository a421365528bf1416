// SequenceLedger: remembers the media sequence numbers of the segments that a live playlist has
// listed, and uses them to classify each new window of that playlist.
//
// - A late copy lists segments that were listed before, under the same numbers: a cache node lags
//   behind. Nothing in it is played. If only late copies are served, and they have advanced step by
//   step over more than twelve segments, they count as a restart under the same names and numbers,
//   which looks the same.
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
#ifndef HLS_SEQUENCE_LEDGER_H_
#define HLS_SEQUENCE_LEDGER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hls/sequence_memory.h"

// The current content of a live playlist: its media sequence number, and its segments by ascending
// number.
struct SequenceWindow {
  std::int64_t first;
  std::vector<NumberedSegment> segments;
};

// A key that names another segment than before.
struct ReusedKey {
  std::string key;
  std::string former_identity;  // of the segment that it named before
};

enum class SequenceVerdict { kGoesOn, kLateCopy, kRestart };

class SequenceLedger {
 public:
  // At least this many pairs are remembered, or those of a whole window if there are more of them.
  static constexpr std::size_t kRemembered = 1'000;

  // Judges a window and, unless it is a late copy, remembers it. A window without segments is
  // judged as kGoesOn and changes nothing.
  SequenceVerdict Follow(const SequenceWindow& window);

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

  Comparison Compare(const SequenceWindow& window) const;
  SequenceVerdict Judge(const SequenceWindow& window, const Comparison& found);
  bool IsOfThePreviousRun(const SequenceWindow& window) const;
  bool HasMovedOnForLong(const SequenceWindow& window);
  void Forget(bool is_late_run);
  void WeighNumbers(const SequenceWindow& window, const Comparison& found);
  bool IsReused(const SequenceWindow& window, const NumberedSegment& pair,
                const Comparison& found) const;
  void Accept(const SequenceWindow& window, const Comparison& found);

  SequenceMemory memory_;
  SequenceMemory previous_;            // of the run before a restart, kept for a while
  std::optional<std::int64_t> first_;  // start of the last accepted window
  std::optional<LateRun> late_run_;
  int proof_ = 0;  // consecutive windows with correct numbers; negative: not trusted
  std::vector<ReusedKey> reused_;
};

#endif  // HLS_SEQUENCE_LEDGER_H_
