// SequenceLedger: remembers the media sequence numbers of the segments that a live playlist has
// listed, and decides from them what a new window of that playlist is.
//
// - A late copy shows segments that were listed before, under the numbers they had then: a cache
//   node lags behind. Nothing of it is played. Only when such copies alone are served, and have
//   moved on step by step over more than twelve segments, are they taken for a restart under the
//   same names and numbers, which looks alike.
// - A restart lists known keys under other, smaller numbers: the encoder was restarted under the
//   same names. Everything in it is new.
// - A key that returns under a larger number, after its old one has left the window, names a new
//   segment: names are reused in a ring.
// - Any other known key is the segment that it was before. An unknown one is new, whatever its
//   number is.
//
// Some servers do not count segments: their number never changes, counts refreshes or is a clock.
// That shows when the numbers of one segment differ from window to window. From then on the keys
// alone decide, until the numbers have been right for some time.
//
// Not safe from several threads at a time. Numbers are compared within one playlist only.
#ifndef HLS_SEQUENCE_LEDGER_H_
#define HLS_SEQUENCE_LEDGER_H_

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hls/sequence_memory.h"

// What a live playlist lists now: its media sequence number, and its segments by ascending number.
struct SequenceWindow {
  std::int64_t first;
  std::vector<NumberedSegment> segments;
};

// A key that names another segment than before.
struct ReusedKey {
  std::string key;
  std::string former_identity;  // of the segment that it named
};

enum class SequenceVerdict { kGoesOn, kLateCopy, kRestart };

class SequenceLedger {
 public:
  // As many pairs are remembered at least, and those of a whole window if that is larger.
  static constexpr std::size_t kRemembered = 1'000;

  // Judges a window and, unless it is a late copy, remembers it. A window without segments goes on
  // and changes nothing.
  SequenceVerdict Follow(const SequenceWindow& window);

  // The keys that the last window, which was followed, has reused for new segments.
  const std::vector<ReusedKey>& ReusedKeys() const { return reused_; }

  // Distinguishes the segment that has this key now from those that had it before.
  std::string IdentityOf(std::string_view key) const;

  std::size_t Size() const { return memory_.Size() + previous_.Size(); }

 private:
  // The pairs of a window, compared with what is remembered.
  struct Comparison {
    std::size_t agreeing = 0;
    std::size_t unknown = 0;       // keys
    std::size_t below = 0;         // keys known under a number below the window
    std::size_t contradicted = 0;  // keys known under a number that the window has no place for

    bool IsRenumbered() const { return below + contradicted > 0; }
  };

  // Late copies in a row.
  struct LateRun {
    std::int64_t begin;  // the last number of its first copy
    std::int64_t end;    // and of its last one
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
  SequenceMemory previous_;            // of the run before a restart, for a while
  std::optional<std::int64_t> first_;  // of the window that was accepted last
  std::optional<LateRun> late_run_;
  int proof_ = 0;  // windows in a row whose numbers were right; negative: they are not believed
  std::vector<ReusedKey> reused_;
};

#endif  // HLS_SEQUENCE_LEDGER_H_
