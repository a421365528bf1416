#include "callback_player.h"

#include <cstddef>

static_assert(sizeof(sd_frame) == sizeof(MediaFrame));
static_assert(offsetof(sd_frame, pts) == offsetof(MediaFrame, pts));
static_assert(offsetof(sd_frame, dts) == offsetof(MediaFrame, dts));
static_assert(offsetof(sd_frame, play_time) == offsetof(MediaFrame, playTime));
static_assert(offsetof(sd_frame, size) == offsetof(MediaFrame, size));
static_assert(offsetof(sd_frame, data) == offsetof(MediaFrame, data));
static_assert(offsetof(sd_frame, reserved) == offsetof(MediaFrame, reserved));

namespace {

// The component does not write the reserved word, so it is not read here.
sd_frame RecordOf(const MediaFrame& frame) {
  return {frame.pts, frame.dts, frame.playTime, frame.size, frame.data, 0};
}

}  // namespace

void CallbackPlayer::OnDuration(float seconds) { Call(callbacks_.on_duration, seconds); }

void CallbackPlayer::OnBufferedTime(float seconds) { Call(callbacks_.on_buffered_time, seconds); }

void CallbackPlayer::OnAudioClock(float seconds) { Call(callbacks_.on_audio_clock, seconds); }

void CallbackPlayer::OnAudioFrame(MediaFrame frame) {
  const sd_frame record = RecordOf(frame);
  Call(callbacks_.on_audio_frame, &record);
}

void CallbackPlayer::OnVideoFrame(MediaFrame frame) {
  const sd_frame record = RecordOf(frame);
  Call(callbacks_.on_video_frame, &record);
}

void CallbackPlayer::OnMessage(std::string line) {
  Call(callbacks_.on_message, line.c_str(), line.size());
}

void CallbackPlayer::OnPlayResult(std::string line) {
  Call(callbacks_.on_play_result, line.c_str(), line.size());
}
