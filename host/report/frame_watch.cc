#include "frame_watch.h"

#include <algorithm>
#include <cmath>

namespace report {
namespace {

constexpr std::uint64_t kMostReorderTicks = 900'000;  // ten seconds
constexpr double kStartSeconds = 0.2;  // so long a stream may be said to be at its start
constexpr double kLateSeconds = 0.1;
// With too few steps to know the usual one, only this is taken for a gap.
constexpr double kGapSecondsAtStart = 2;
constexpr std::size_t kFewSteps = 4;

std::uint64_t DecodeTime(const MediaFrame& frame) {
  const bool plausible = frame.dts <= frame.pts && frame.pts - frame.dts <= kMostReorderTicks;
  return plausible ? frame.dts : frame.pts;
}

std::uint64_t SizeOf(const MediaFrame& frame) {
  return frame.data == nullptr ? 0 : static_cast<std::uint64_t>(std::max(frame.size, 0));
}

}  // namespace

void Jumps::Add(const Jump& jump) {
  ++count;
  if (listed.size() < kMostJumpsListed) listed.push_back(jump);
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

void FrameWatch::Add(double ms, const MediaFrame& frame) {
  const std::uint64_t size = SizeOf(frame);
  const std::uint64_t decode_time = DecodeTime(frame);
  FramePoint point{ms, frame.pts, 1, size, size, std::nullopt};
  if (frames == 0) {
    AddFirst(ms, frame, decode_time);
  } else {
    const double step = AddNext(ms, frame, decode_time);
    point.steps = Range{step, step};
  }
  ++frames;
  bytes += size;
  smallest = frames == 1 ? size : std::min(smallest, size);
  largest = std::max(largest, size);
  if (size == 0) ++empty;
  last_ms = ms;
  last_decode_time_ = decode_time;
  last_play_time_ = frame.playTime;
  points.Add(point);
}

void FrameWatch::AddFirst(double ms, const MediaFrame& frame, std::uint64_t decode_time) {
  first_ms = ms;
  first_pts = least_pts = most_pts = reached_pts = frame.pts;
  first_decode_time_ = decode_time;
}

double FrameWatch::AddNext(double ms, const MediaFrame& frame, std::uint64_t decode_time) {
  const double step = SecondsBetween(last_decode_time_, decode_time);
  least_pts = std::min(least_pts, frame.pts);
  most_pts = std::max(most_pts, frame.pts);
  reached_pts = step < -kBackSeconds ? frame.pts : std::max(reached_pts, frame.pts);
  JudgeStep(step, ms, decode_time);
  JudgePlayTime(frame, decode_time);
  JudgeArrival(ms);
  return step;
}

void FrameWatch::JudgeStep(double step, double ms, std::uint64_t decode_time) {
  const Jump jump{frames, ms, last_decode_time_, decode_time};
  if (step < -kBackSeconds) {
    backs.Add(jump);
    return;
  }
  const std::optional<double> usual = usual_step_.Median();
  const double limit = usual ? std::max(kGapSeconds, kGapTimesStep * *usual) : kGapSecondsAtStart;
  if (step > limit) {
    gaps.Add(jump);
    // A player may sit out the gap, but not for longer than it was waiting for the frame anyway.
    played_seconds_ += std::min(step, (ms - last_ms) / kMsPerSecond);
    return;
  }
  if (decode_time == last_decode_time_) ++same_time;
  played_seconds_ += step;
  usual_step_.Add(step);
}

void FrameWatch::JudgePlayTime(const MediaFrame& frame, std::uint64_t decode_time) {
  if (frame.playTime == 0) {
    if (SecondsBetween(first_decode_time_, decode_time) > kStartSeconds) ++without_play_time;
  } else if (frame.playTime < last_play_time_) {
    ++play_time_back;
  }
}

void FrameWatch::JudgeArrival(double ms) {
  if (ms - last_ms > longest_silence_ms) {
    longest_silence_ms = ms - last_ms;
    longest_silence_at_ms = ms;
  }
  const double late = (ms - first_ms) / kMsPerSecond - played_seconds_;
  if (late > kLateSeconds) ++late_frames;
  if (late > latest_seconds) {
    latest_seconds = late;
    latest_at_ms = ms;
  }
}

}  // namespace report
