#include "picture_timing.h"

#include <cmath>

namespace player {
namespace {

// A time so far away is no picture to wait for, but another count of time.
constexpr double kFarAway = 10;

PictureVerdict JudgeNear(double ahead, std::optional<double> next_ahead) {
  constexpr double kSoonEnough = 0.002;
  constexpr double kTooLate = 0.02;
  if (ahead > kSoonEnough) return {PictureVerdict::Deed::kWait, ahead};
  // Rather the next one in time than this one late.
  const bool is_passed_over = -ahead > kTooLate && next_ahead && *next_ahead < -ahead;
  return {is_passed_over ? PictureVerdict::Deed::kPassOver : PictureVerdict::Deed::kShow, {}};
}

}  // namespace

PictureVerdict PictureTiming::Judge(const PictureFacts& facts) {
  const double ahead = facts.time - facts.due;
  if (std::abs(ahead) > kFarAway) return JudgeFarAway(facts);
  far_since_.reset();
  distance_.reset();
  if (!facts.next) return JudgeNear(ahead, {});
  return JudgeNear(ahead, *facts.next - facts.due);
}

PictureVerdict PictureTiming::JudgeFarAway(const PictureFacts& facts) {
  constexpr double kPatience = 3;
  if (!facts.is_heard) return {PictureVerdict::Deed::kSetClock, {}};
  const double ahead = facts.time - facts.due;
  if (distance_ && std::abs(ahead - *distance_) > kFarAway) distance_.reset();
  if (!distance_) {
    if (!far_since_) far_since_ = facts.now;
    if (facts.now - *far_since_ < kPatience) return {PictureVerdict::Deed::kWait, {}};
    far_since_.reset();
    distance_ = ahead;
  }
  const double own_due = facts.due + *distance_;
  if (!facts.next) return JudgeNear(facts.time - own_due, {});
  return JudgeNear(facts.time - own_due, *facts.next - own_due);
}

}  // namespace player
