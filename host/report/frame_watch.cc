#include "frame_watch.h"

#include <algorithm>
#include <optional>

namespace report {
namespace {

// The component computes the playTime of a frame from its pts alone if it delivers the frame before
// it knows the following ones. With reordered frames such a playTime may be this far ahead.
constexpr auto kReorderTicks = static_cast<std::uint64_t>(kReorderSeconds * kTicksPerSecond);

std::uint64_t SizeOf(const MediaFrame& frame) {
  return frame.data == nullptr ? 0 : static_cast<std::uint64_t>(std::max(frame.size, 0));
}

std::optional<Range> RangeOf(const std::optional<double>& step) {
  return step ? std::optional(Range{*step, *step}) : std::nullopt;
}

}  // namespace

void FrameWatch::Add(double ms, const MediaFrame& frame) {
  const std::uint64_t size = SizeOf(frame);
  FramePoint point{ms, frame.pts, 1, size, size, std::nullopt, std::nullopt};
  point.dts_steps = RangeOf(by_dts_.Add(ms, frame, decode_times_.DecodeTimeOf(frame)));
  point.pts_steps = RangeOf(by_pts_.Add(ms, frame, frame.pts));
  if (frames == 0) {
    AddFirst(ms, frame);
  } else {
    AddNext(ms, frame);
  }
  ++frames;
  bytes += size;
  smallest = frames == 1 ? size : std::min(smallest, size);
  largest = std::max(largest, size);
  if (size == 0) ++empty;
  last_ms = ms;
  last_play_time_ = frame.playTime;
  points.Add(point);
}

void FrameWatch::AddFirst(double ms, const MediaFrame& frame) {
  first_ms = ms;
  first_pts = least_pts = most_pts = frame.pts;
}

void FrameWatch::AddNext(double ms, const MediaFrame& frame) {
  least_pts = std::min(least_pts, frame.pts);
  most_pts = std::max(most_pts, frame.pts);
  const bool has_play_time = frame.playTime != 0;
  if (has_play_time && frame.playTime < last_play_time_ &&
      last_play_time_ - frame.playTime > kReorderTicks) {
    ++play_time_back;
  }
  if (ms - last_ms > longest_silence_ms) {
    longest_silence_ms = ms - last_ms;
    longest_silence_at_ms = ms;
  }
}

}  // namespace report
