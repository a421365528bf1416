#include "picture_timing.h"

#include <cmath>

#include "play_clock.h"

namespace player {
namespace {

using Action = PictureVerdict::Action;

PictureVerdict JudgeNear(double ahead, std::optional<double> next_ahead) {
  constexpr double kSoonEnough = 0.002;
  constexpr double kTooLate = 0.02;
  if (ahead > kSoonEnough) return {Action::kWait, ahead};
  // Rather the next one in time than this one late.
  const bool is_skipped = -ahead > kTooLate && next_ahead && *next_ahead < -ahead;
  return {is_skipped ? Action::kSkip : Action::kShow};
}

PictureVerdict JudgeBy(double due, const PictureFacts& facts) {
  if (!facts.next) return JudgeNear(facts.time - due, {});
  return JudgeNear(facts.time - due, *facts.next - due);
}

}  // namespace

PictureVerdict PictureTiming::Judge(const PictureFacts& facts) {
  if (std::abs(facts.time - facts.due) > kFarApart) return JudgeFarAway(facts);
  far_since_.reset();
  distance_.reset();
  return JudgeBy(facts.due, facts);
}

PictureVerdict PictureTiming::JudgeFarAway(const PictureFacts& facts) {
  constexpr double kPatience = 3;
  if (!facts.is_heard) return {Action::kSetClock};
  const double ahead = facts.time - facts.due;
  if (distance_ && std::abs(ahead - *distance_) > kFarApart) distance_.reset();
  if (!distance_) {
    if (!far_since_) far_since_ = facts.now;
    if (facts.now - *far_since_ < kPatience) return {Action::kWait};
    far_since_.reset();
    distance_ = ahead;
  }
  PictureVerdict verdict = JudgeBy(facts.due + *distance_, facts);
  verdict.follows_clock = false;
  return verdict;
}

}  // namespace player
