#include "common/player_port.h"

#include <utility>

#include "common/caught.h"
#include "common/once_per_start.h"
#include "stream_player.h"

namespace stream {
namespace {

constexpr std::uint64_t kTicksPerSecond = 90000;

// Kept for compatibility: the padding and the reserved word are not written.
MediaFrame MakeMediaFrame(const FrameRecord& frame) {
  MediaFrame media;
  media.pts = frame.pts;
  media.dts = frame.dts;
  media.playTime = frame.playTime;
  media.size = frame.size;
  media.data = frame.data;
  return media;
}

void LogThrow(const char* where) noexcept {
  if (IsFirstSinceStart(OncePerStart::kPlayerThrew)) LogCaught(where, "; a player must not throw");
}

}  // namespace

template <typename Function>
void PlayerPort::Call(const char* where, const Function& call) const noexcept {
  if (player_ == nullptr) return;
  try {
    call();
  } catch (...) {
    LogThrow(where);
  }
}

float WholeSeconds(std::uint64_t play_time) {
  const std::uint64_t seconds = play_time / kTicksPerSecond;
  return static_cast<float>(seconds);
}

PlayerPort::PlayerPort(CStreamPlayerImp* player)
    : player_(player), lines_(player == nullptr ? nullptr : &PlayerLinesFor(player)) {}

void PlayerPort::Message(std::string line) const {
  Call("the player threw in OnMessage: ", [&] { lines_->message(*player_, std::move(line)); });
}

void PlayerPort::PlayResult(std::string line) const {
  Call("the player threw in OnPlayResult: ",
       [&] { lines_->play_result(*player_, std::move(line)); });
}

void PlayerPort::Duration(float seconds) const {
  Call("the player threw in OnDuration: ", [&] { player_->OnDuration(seconds); });
}

void PlayerPort::BufferedTime(float seconds) const {
  Call("the player threw in OnBufferedTime: ", [&] { player_->OnBufferedTime(seconds); });
}

void PlayerPort::VideoFrame(const FrameRecord& frame) const {
  Call("the player threw in OnVideoFrame: ", [&] {
    player_->OnVideoFrame(MakeMediaFrame(frame));  // NOLINT(clang-analyzer-core.CallAndMessage)
  });
}

void PlayerPort::AudioFrame(const FrameRecord& frame) const {
  Call("the player threw in OnAudioClock: ",
       [&] { player_->OnAudioClock(WholeSeconds(frame.playTime)); });
  Call("the player threw in OnAudioFrame: ", [&] {
    player_->OnAudioFrame(MakeMediaFrame(frame));  // NOLINT(clang-analyzer-core.CallAndMessage)
  });
}

}  // namespace stream
