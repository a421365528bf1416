// A player that runs an action once, while an MP4 file is read.
#ifndef TESTS_SUPPORT_ACTION_PLAYER_H_
#define TESTS_SUPPORT_ACTION_PLAYER_H_

#include <functional>
#include <string>
#include <utility>

#include "public/stream_player.h"

struct ActionPlayer final : CStreamPlayerImp {
  void OnDuration(float /*seconds*/) override {}
  void OnBufferedTime(float /*seconds*/) override {
    if (const auto action = std::exchange(once, nullptr)) action();
  }
  void OnAudioClock(float /*seconds*/) override {}
  void OnAudioFrame(MediaFrame /*frame*/) override {}
  void OnVideoFrame(MediaFrame /*frame*/) override {}
  void OnMessage(std::string /*line*/) override {}
  void OnPlayResult(std::string /*line*/) override {}

  std::function<void()> once;
};

#endif  // TESTS_SUPPORT_ACTION_PLAYER_H_
