// LiveWindow: tells from the media sequence numbers of a live playlist that its stream has begun
// anew, which a server does whose encoder was restarted. The names of the segments begin anew with
// it, and must not be taken for those that were played before.
//
// A cache that lags behind shows an old window too. So one that lies below the last is believed
// only once it moves on, or when it comes for the third time; until then it is passed over.
#ifndef HLS_LIVE_WINDOW_H_
#define HLS_LIVE_WINDOW_H_

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "common/never_destroyed.h"

class LiveWindow {
 public:
  // What a playlist without "#EXT-X-MEDIA-SEQUENCE:" counts from: it tells nothing.
  static constexpr std::int64_t kNoSequence = std::numeric_limits<std::int64_t>::min();

  enum class Verdict {
    kGoesOn,
    kDoubtful,    // all of it lies below the window before: not to be played yet
    kBeginsAnew,  // it does so, and is believed
  };

  // Takes the window of the playlist at `source` that has just come: `count` segments from the
  // number `first` on. Windows of another source are not compared with those of this one.
  Verdict Follow(const std::string& source, std::int64_t first, std::size_t count);

  void Forget() { *this = LiveWindow(); }

 private:
  bool LiesBelow(std::int64_t first, std::size_t count) const;
  bool IsBelieved(std::int64_t first, std::size_t count);

  std::string source_;
  std::int64_t first_ = kNoSequence;
  int doubts_ = 0;                   // doubtful windows in a row
  std::int64_t doubtful_first_ = 0;  // of the last of them
  std::size_t doubtful_count_ = 0;
};

// The window of the stream that plays. Guarded by g_playlistMutex.
extern NeverDestroyed<LiveWindow> g_liveWindow;

#endif  // HLS_LIVE_WINDOW_H_
