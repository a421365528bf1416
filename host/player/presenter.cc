#include "presenter.h"

#include <algorithm>
#include <optional>

namespace player {
namespace {

std::optional<double> PictureTimeAt(const Playback& playback, std::size_t index) {
  return playback.pictures().Peek(index, [](const Picture& picture) { return picture.seconds; });
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
  while (const auto next = NextOf(playback)) {
    const PictureVerdict verdict = timing_.Judge(next->facts);
    if (verdict.action == PictureVerdict::Action::kWait) {
      return std::min(verdict.wait.value_or(longest), longest);
    }
    if (verdict.action == PictureVerdict::Action::kSetClock) {
      playback.clock().Start(next->facts.time, next->facts.now);
      continue;
    }
    const auto picture = playback.pictures().Pop();
    if (!picture) break;
    if (verdict.action == PictureVerdict::Action::kSkip) {
      ++counts_.late_pictures;
      continue;
    }
    if (Show(*picture) && verdict.follows_clock) {
      Compare(picture->seconds, playback.clock(), next->segment);
    }
    return 0;  // commands are handled before the next picture
  }
  return longest;
}

std::optional<Presenter::Next> Presenter::NextOf(const Playback& playback) const {
  const double now = Now();
  const auto time = PictureTimeAt(playback, 0);
  const auto due = playback.clock().TimeAt(now);
  if (!time || !due) return std::nullopt;
  const bool is_heard = playback.clock().HeardAt(now).has_value();
  return Next{{*time, PictureTimeAt(playback, 1), due->seconds, is_heard, now}, due->segment};
}

bool Presenter::Show(const Picture& picture) {
  const bool is_shown = window_.Show(*picture.frame);
  ++(is_shown ? counts_.shown : counts_.errors);
  return is_shown;
}

// Compares the picture, now visible, with the audio heard at this moment. If the times have jumped
// since the picture was chosen, there is nothing to compare.
void Presenter::Compare(double picture, const PlayClock& clock, std::uint64_t segment) {
  const auto audio = clock.AudioAt(Now());
  if (!audio || audio->segment != segment) return;
  counts_.Compare(picture, audio->seconds);
  if (on_comparison_) on_comparison_(picture, audio->seconds);
}

}  // namespace player
