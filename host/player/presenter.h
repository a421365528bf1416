// Shows the pictures that are due. For the main thread only.
#ifndef HOST_PLAYER_PRESENTER_H_
#define HOST_PLAYER_PRESENTER_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <utility>

#include "clock.h"
#include "picture_timing.h"
#include "play_counts.h"
#include "playback.h"
#include "window.h"

namespace player {

class Presenter {
 public:
  // Receives the stream times of a picture that was shown and of the audio heard when it became
  // visible.
  using OnComparison = std::function<void(double picture, double audio)>;

  // All references are borrowed. `on_comparison` may be empty.
  Presenter(Window& window, const host::Clock& clock, PlayCounts& counts,
            OnComparison on_comparison = {})
      : window_(window), clock_(clock), counts_(counts), on_comparison_(std::move(on_comparison)) {}

  // Prepares the window for the first picture before the clock starts, since this takes long.
  void Prepare(const Playback& playback);

  // Shows the picture of `playback` that is due. Returns the seconds until the next call, at most
  // `longest`.
  double ShowDue(Playback& playback, double longest);

 private:
  // The next picture, and the clock segment in which it is due.
  struct Next {
    PictureFacts facts;
    std::uint64_t segment = 0;
  };

  std::optional<Next> NextOf(const Playback& playback) const;
  bool Show(const Picture& picture);
  void Compare(double picture, const PlayClock& clock, std::uint64_t segment);
  double Now() const { return clock_.NowMs() / 1000; }

  Window& window_;
  const host::Clock& clock_;
  PlayCounts& counts_;
  const OnComparison on_comparison_;
  PictureTiming timing_;
};

}  // namespace player

#endif  // HOST_PLAYER_PRESENTER_H_
