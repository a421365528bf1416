#include "presenter.h"

#include <algorithm>
#include <optional>

namespace player {
namespace {

constexpr double kSoonEnough = 0.002;
// A picture so late is passed over when the next one is due as well.
constexpr double kTooLate = 0.1;
// A time so far away is no picture to wait for, but another count of time.
constexpr double kJump = 10;

std::optional<double> TimeOf(const Playback& playback, std::size_t place) {
  return playback.pictures().Peek(place, [](const Picture& picture) { return picture.seconds; });
}

}  // namespace

void Presenter::Prepare(const Playback& playback) {
  if (playback.clock().HasStarted()) return;
  playback.pictures().Peek(0, [this](const Picture& picture) {
    window_.Prepare(*picture.frame);
    return true;
  });
}

double Presenter::ShowDue(Playback& playback, double longest) {
  PlayClock& clock = playback.clock();
  while (const auto time = TimeOf(playback, 0)) {
    const double now = Now();
    const auto due = clock.At(now);
    if (!due) return longest;
    const double ahead = *time - *due;
    if (ahead > kJump && !clock.HeardAt(now)) {
      clock.Start(*time, now);
      continue;
    }
    if (ahead > kSoonEnough && ahead <= kJump) return std::min(ahead, longest);
    const bool passed_over = IsPassedOver(playback, -ahead);
    const auto picture = playback.pictures().Pop();
    if (!picture) return longest;
    if (passed_over) {
      ++counts_.passed_over;
    } else {
      Show(*picture, clock);
    }
  }
  return longest;
}

bool Presenter::IsPassedOver(const Playback& playback, double late) const {
  if (late < kTooLate) return false;
  const auto next = TimeOf(playback, 1);
  const auto due = playback.clock().At(Now());
  return next && due && *next <= *due;
}

void Presenter::Show(const Picture& picture, const PlayClock& clock) {
  if (!window_.Show(*picture.frame)) {
    ++counts_.errors;
    return;
  }
  ++counts_.shown;
  // Where the sound is now, when the picture can be seen.
  if (const auto heard = clock.HeardAt(Now())) counts_.Compare(picture.seconds, *heard);
}

}  // namespace player
