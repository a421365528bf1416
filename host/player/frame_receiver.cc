#include "frame_receiver.h"

#include <algorithm>
#include <utility>

#include "guarded_call.h"

namespace player {

template <typename Call>
void FrameReceiver::Guarded(const Call& call) {
  if (!host::GuardedCall(call)) ++counts_.errors;
}

void FrameReceiver::OnDuration(float seconds) {
  Guarded([&] {
    if (observer_ != nullptr) observer_->OnDuration(seconds);
    RecordArrival();
    const std::lock_guard lock(mutex_);
    latest_.duration = seconds;
  });
}

void FrameReceiver::OnBufferedTime(float seconds) {
  Guarded([&] {
    if (observer_ != nullptr) observer_->OnBufferedTime(seconds);
    RecordArrival();
    const std::lock_guard lock(mutex_);
    latest_.buffered = seconds;
  });
}

void FrameReceiver::OnAudioClock(float seconds) {
  Guarded([&] {
    if (observer_ != nullptr) observer_->OnAudioClock(seconds);
    RecordArrival();
  });
}

void FrameReceiver::OnAudioFrame(MediaFrame frame) {
  Guarded([&] {
    if (observer_ != nullptr) observer_->OnAudioFrame(frame);
    ++counts_.audio_frames;
    QueueFrame(Kind::kAudio, frame);
  });
}

void FrameReceiver::OnVideoFrame(MediaFrame frame) {
  Guarded([&] {
    if (observer_ != nullptr) observer_->OnVideoFrame(frame);
    ++counts_.video_frames;
    QueueFrame(Kind::kVideo, frame);
  });
}

void FrameReceiver::OnMessage(std::string line) {
  Guarded([&] {
    if (observer_ != nullptr) observer_->OnMessage(line);
    RecordLine(std::move(line));
  });
}

void FrameReceiver::OnPlayResult(std::string line) {
  Guarded([&] {
    if (observer_ != nullptr) observer_->OnPlayResult(line);
    RecordLine(std::move(line));
  });
}

void FrameReceiver::SetQueue(FrameQueue* queue) {
  queue_ = queue;
  const std::lock_guard lock(mutex_);
  farthest_.reset();
  latest_.buffered.reset();
}

StreamStatus FrameReceiver::LatestStatus() const {
  const std::lock_guard lock(mutex_);
  return latest_;
}

std::optional<double> FrameReceiver::OriginSeconds() const {
  const std::lock_guard lock(mutex_);
  if (!origin_) return std::nullopt;
  return SecondsOf(*origin_);
}

std::optional<double> FrameReceiver::FarthestSeconds() const {
  const std::lock_guard lock(mutex_);
  if (!farthest_) return std::nullopt;
  return SecondsOf(*farthest_);
}

void FrameReceiver::RecordLine(std::string line) {
  RecordArrival();
  if (line.starts_with("PLAY FLV")) is_flv_ = true;
  const std::lock_guard lock(mutex_);
  latest_.status = std::move(line);
}

void FrameReceiver::QueueFrame(Kind kind, const MediaFrame& frame) {
  RecordArrival();
  RecordTimes(kind, frame.pts);
  FrameQueue* const queue = queue_.load();
  if (queue == nullptr || frame.data == nullptr || frame.size <= 0) return;
  queue->Push(kind, {{frame.data, frame.data + frame.size}, frame.pts, frame.dts});
  RecordArrival();  // Push may have blocked for a long time
}

void FrameReceiver::RecordTimes(Kind kind, std::uint64_t pts) {
  const std::lock_guard lock(mutex_);
  const bool is_first = !std::exchange(seen_[kind == Kind::kVideo ? 0 : 1], true);
  if (is_first && !origin_is_kept_.load()) origin_ = std::min(origin_.value_or(pts), pts);
  farthest_ = std::max(farthest_.value_or(pts), pts);
}

}  // namespace player
