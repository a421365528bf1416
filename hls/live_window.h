// LiveWindow: tells from the media sequence numbers of a live playlist that its stream has begun
// anew, which a server does whose encoder was restarted. The names of the segments begin anew with
// it, and must not be taken for those that were played before.
#ifndef HLS_LIVE_WINDOW_H_
#define HLS_LIVE_WINDOW_H_

#include <cstddef>
#include <cstdint>
#include <limits>

class LiveWindow {
 public:
  // What a playlist without "#EXT-X-MEDIA-SEQUENCE:" counts from: it tells nothing.
  static constexpr std::int64_t kNoSequence = std::numeric_limits<std::int64_t>::min();

  // Takes the window of the playlist that has just come: `count` segments from the number `first`
  // on. True when all of them lie before the window that came before. One that overlaps it is a
  // late copy at most, of which nothing is to be played again.
  bool BeginsAnew(std::int64_t first, std::size_t count);

  void Forget() { first_ = kNoSequence; }

 private:
  std::int64_t first_ = kNoSequence;
};

// The window of the stream that plays. Guarded by g_playlistMutex.
extern LiveWindow g_liveWindow;

#endif  // HLS_LIVE_WINDOW_H_
