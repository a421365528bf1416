#include "step_watch.h"

#include <algorithm>
#include <cmath>

namespace report {
namespace {

constexpr double kStartSeconds = 0.2;  // the start of a stream, in which playTime may be 0
constexpr double kLateSeconds = 0.1;
// With too few steps to know the usual step, only a longer one counts as a gap.
constexpr double kGapSecondsAtStart = 2;
constexpr std::size_t kFewSteps = 4;

}  // namespace

void Jumps::Add(const Jump& jump) {
  ++count;
  if (listed.size() < kMaxJumpsListed) listed.push_back(jump);
  if (!widest || std::abs(jump.Seconds()) > std::abs(widest->Seconds())) widest = jump;
}

void UsualStep::Add(double seconds) {
  newest_.at(count_ % newest_.size()) = seconds;
  ++count_;
}

std::optional<double> UsualStep::Median() const {
  if (count_ < kFewSteps) return std::nullopt;
  const std::size_t known = std::min(count_, newest_.size());
  std::vector<double> steps(newest_.begin(), newest_.begin() + static_cast<std::ptrdiff_t>(known));
  const auto middle = steps.begin() + static_cast<std::ptrdiff_t>(known / 2);
  std::nth_element(steps.begin(), middle, steps.end());
  return *middle;
}

std::optional<double> StepWatch::Add(double ms, const MediaFrame& frame,
                                     std::uint64_t decode_time) {
  std::optional<double> step;
  if (frames_ == 0) {
    AddFirst(ms, frame, decode_time);
  } else {
    step = AddNext(ms, frame, decode_time);
  }
  ++frames_;
  last_ms_ = ms;
  last_decode_time_ = decode_time;
  return step;
}

void StepWatch::AddFirst(double ms, const MediaFrame& frame, std::uint64_t decode_time) {
  first_ms_ = ms;
  reached_pts = frame.pts;
  first_decode_time_ = decode_time;
}

double StepWatch::AddNext(double ms, const MediaFrame& frame, std::uint64_t decode_time) {
  const double step = SecondsBetween(last_decode_time_, decode_time);
  reached_pts = step < -kBackSeconds ? frame.pts : std::max(reached_pts, frame.pts);
  JudgeStep(step, ms, decode_time);
  if (frame.playTime == 0 && SecondsBetween(first_decode_time_, decode_time) > kStartSeconds) {
    ++without_play_time;
  }
  JudgeArrival(ms);
  return step;
}

void StepWatch::JudgeStep(double step, double ms, std::uint64_t decode_time) {
  const Jump jump{frames_, ms, last_decode_time_, decode_time};
  if (step < -kBackSeconds) {
    backs.Add(jump);
    return;
  }
  const std::optional<double> usual = usual_step_.Median();
  const double limit = usual ? std::max(kGapSeconds, kGapTimesStep * *usual) : kGapSecondsAtStart;
  if (step > limit) {
    gaps.Add(jump);
    // A player may wait out the gap, but not longer than it waited for the frame to arrive.
    played_seconds_ += std::min(step, (ms - last_ms_) / kMsPerSecond);
    return;
  }
  if (decode_time == last_decode_time_) ++same_time;
  played_seconds_ += step;
  usual_step_.Add(step);
}

void StepWatch::JudgeArrival(double ms) {
  const double late = (ms - first_ms_) / kMsPerSecond - played_seconds_;
  if (late > kLateSeconds) ++late_frames;
  if (late > latest_seconds) {
    latest_seconds = late;
    latest_at_ms = ms;
  }
}

}  // namespace report
