#include "common/player_port.h"

#include <utility>

#include "public/stream_player.h"

namespace {

constexpr std::uint64_t kTicksPerSecond = 90000;

// The padding and the reserved word stay as they are on purpose.
MediaFrame MakeMediaFrame(const FrameRecord& frame) {
  MediaFrame media;
  media.pts = frame.pts;
  media.dts = frame.dts;
  media.playTime = frame.playTime;
  media.size = frame.size;
  media.data = frame.data;
  return media;
}

}  // namespace

float WholeSeconds(std::uint64_t play_time) {
  const std::uint64_t seconds = play_time / kTicksPerSecond;
  return static_cast<float>(seconds);
}

void PlayerPort::Message(std::string line) const {
  if (player_ != nullptr) player_->OnMessage(std::move(line));
}

void PlayerPort::PlayResult(std::string line) const {
  if (player_ != nullptr) player_->OnPlayResult(std::move(line));
}

void PlayerPort::Duration(float seconds) const {
  if (player_ != nullptr) player_->OnDuration(seconds);
}

void PlayerPort::BufferedTime(float seconds) const {
  if (player_ != nullptr) player_->OnBufferedTime(seconds);
}

void PlayerPort::VideoFrame(const FrameRecord& frame) const {
  if (player_ == nullptr) return;
  player_->OnVideoFrame(MakeMediaFrame(frame));  // NOLINT(clang-analyzer-core.CallAndMessage)
}

void PlayerPort::AudioFrame(const FrameRecord& frame) const {
  if (player_ == nullptr) return;
  player_->OnAudioClock(WholeSeconds(frame.playTime));
  player_->OnAudioFrame(MakeMediaFrame(frame));  // NOLINT(clang-analyzer-core.CallAndMessage)
}
