// LiveSequences: a ledger of media sequence numbers for each live playlist of the stream, the
// top-level one or a variant. Not safe from several threads at a time.
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
  // Of so many playlists numbers are remembered: those that were asked for last.
  static constexpr std::size_t kRememberedSources = 8;

  // The ledger of a playlist, empty at first. Valid until another one is asked for.
  SequenceLedger& LedgerOf(const std::string& source);

  // Forgets all playlists but the one that was asked for last: after a restart every segment is
  // new.
  void ForgetOthers();

  void Forget() { ledgers_.clear(); }
  std::size_t Size() const { return ledgers_.size(); }

 private:
  std::list<std::pair<std::string, SequenceLedger>> ledgers_;  // the one asked for last in front
};

// Those of the stream that plays. Guarded by g_playlistMutex.
extern NeverDestroyed<LiveSequences> g_liveSequences;

// Of a longer playlist only the newest segments are compared, days of them; for the others the keys
// alone decide.
inline constexpr std::size_t kMostCompared = 100'000;

// The segments of a live playlist that have a number, from `media_sequence` on. The table may begin
// with the rest of an earlier text, which is not part of the window. The keys are those of
// `entries`.
SequenceWindow WindowOf(const M3u8Table& entries, std::int64_t media_sequence);

#endif  // HLS_LIVE_SEQUENCES_H_
