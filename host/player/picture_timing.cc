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
  // Showing the next picture on time is better than showing this one late.
  const bool is_skipped = -ahead > kTooLate && next_ahead && *next_ahead < -ahead;
  return {is_skipped ? Action::kSkip : Action::kShow};
}

}  // namespace

PictureVerdict PictureTiming::Judge(const PictureFacts& facts) {
  if (std::abs(facts.time - facts.due) > kFarApart) return JudgeFarAway(facts);
  far_since_.reset();
  distance_.reset();
  return JudgeBy(facts.due, facts);
}

PictureVerdict PictureTiming::JudgeBy(double due, const PictureFacts& facts) {
  std::optional<double> next_ahead;
  if (facts.next) next_ahead = *facts.next - due;
  const PictureVerdict verdict = JudgeNear(facts.time - due, next_ahead);
  if (verdict.action == Action::kShow) last_ = Shown{facts.time, facts.now};
  return verdict;
}

// When the picture is due, measured from the previous one; nullopt if the two are far apart.
std::optional<double> PictureTiming::OwnDue(const PictureFacts& facts) const {
  if (!last_ || std::abs(facts.time - last_->time) > kFarApart) return std::nullopt;
  return last_->time + (facts.now - last_->at);
}

PictureVerdict PictureTiming::JudgeFarAway(const PictureFacts& facts) {
  constexpr double kMaxWait = 3;
  if (!facts.is_heard) return {Action::kSetClock};
  const double ahead = facts.time - facts.due;
  if (distance_ && std::abs(ahead - *distance_) > kFarApart) distance_.reset();
  if (const auto due = OwnDue(facts); !distance_ && due) distance_ = *due - facts.due;
  if (!distance_) {
    if (!far_since_) far_since_ = facts.now;
    if (facts.now - *far_since_ < kMaxWait) return {Action::kWait};
    far_since_.reset();
    distance_ = ahead;
  }
  PictureVerdict verdict = JudgeBy(facts.due + *distance_, facts);
  verdict.follows_clock = false;
  return verdict;
}

}  // namespace player
