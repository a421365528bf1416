// Shows the pictures that are due. For the main thread only.
#ifndef HOST_PLAYER_PRESENTER_H_
#define HOST_PLAYER_PRESENTER_H_

#include <optional>

#include "clock.h"
#include "picture_timing.h"
#include "play_counts.h"
#include "playback.h"
#include "window.h"

namespace player {

class Presenter {
 public:
  // All are borrowed.
  Presenter(Window& window, const host::Clock& clock, PlayCounts& counts)
      : window_(window), clock_(clock), counts_(counts) {}

  // Makes the window ready for the first picture before time begins to go by, since that takes
  // long.
  void Prepare(const Playback& playback);

  // Shows the picture of `playback` that is due. Returns in how many seconds to ask again: never
  // more than `longest`.
  double ShowDue(Playback& playback, double longest);

 private:
  std::optional<PictureFacts> FactsOfNext(const Playback& playback) const;
  void Show(const Picture& picture, const PlayClock& clock);
  double Now() const { return clock_.NowMs() / 1000; }

  Window& window_;
  const host::Clock& clock_;
  PlayCounts& counts_;
  PictureTiming timing_;
};

}  // namespace player

#endif  // HOST_PLAYER_PRESENTER_H_
