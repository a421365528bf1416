#include "presenter.h"

#include <algorithm>
#include <optional>

namespace player {
namespace {

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
  while (const auto facts = FactsOfNext(playback)) {
    const PictureVerdict verdict = timing_.Judge(*facts);
    if (verdict.deed == PictureVerdict::Deed::kWait) {
      return std::min(verdict.wait.value_or(longest), longest);
    }
    if (verdict.deed == PictureVerdict::Deed::kSetClock) {
      playback.clock().Start(facts->time, facts->now);
      continue;
    }
    const auto picture = playback.pictures().Pop();
    if (!picture) break;
    if (verdict.deed != PictureVerdict::Deed::kPassOver) {
      Show(*picture, playback.clock());
      return 0;  // the keys are due before the next one
    }
    ++counts_.passed_over;
  }
  return longest;
}

std::optional<PictureFacts> Presenter::FactsOfNext(const Playback& playback) const {
  const double now = Now();
  const auto time = TimeOf(playback, 0);
  const auto due = playback.clock().At(now);
  if (!time || !due) return std::nullopt;
  const bool is_heard = playback.clock().HeardAt(now).has_value();
  return PictureFacts{*time, TimeOf(playback, 1), *due, is_heard, now};
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
