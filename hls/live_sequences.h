// LiveSequences: one ledger of media sequence numbers for each live playlist of the stream, that is
// for the top-level playlist and its variants. Not thread-safe.
#ifndef HLS_LIVE_SEQUENCES_H_
#define HLS_LIVE_SEQUENCES_H_

#include <cstddef>
#include <cstdint>
#include <list>
#include <string>
#include <utility>

#include "common/never_destroyed.h"
#include "hls/m3u8_playlist.h"
#include "hls/sequence_ledger.h"

class LiveSequences {
 public:
  // The numbers of this many playlists are remembered: the most recently requested ones.
  static constexpr std::size_t kRememberedSources = 8;

  // The ledger of a playlist, empty at first. The reference is valid until another ledger is
  // requested.
  SequenceLedger& LedgerOf(const std::string& source);

  // Forgets all playlists but the most recently requested one: after a restart every segment is
  // new.
  void ForgetOthers();

  void Forget() { ledgers_.clear(); }
  std::size_t Size() const { return ledgers_.size(); }

 private:
  std::list<std::pair<std::string, SequenceLedger>> ledgers_;  // most recently requested first
};

// The ledgers of the current stream. Guarded by g_playlistMutex.
extern NeverDestroyed<LiveSequences> g_liveSequences;

// In a longer playlist only this many segments are compared, the newest ones, which last for days.
// For older segments the keys alone decide.
inline constexpr std::size_t kMostCompared = 100'000;

// Returns the numbered segments of a live playlist, starting at `media_sequence`. The table may
// begin with the rest of an earlier text, which is not part of the window. The keys are views into
// `entries`.
SequenceWindow WindowOf(const M3u8Table& entries, std::int64_t media_sequence);

#endif  // HLS_LIVE_SEQUENCES_H_
