// A player that counts its calls and throws in each of them. Safe from any thread.
#ifndef TESTS_SUPPORT_THROWING_PLAYER_H_
#define TESTS_SUPPORT_THROWING_PLAYER_H_

#include <atomic>
#include <stdexcept>
#include <string>

#include "public/stream_player.h"

class ThrowingPlayer final : public CStreamPlayerImp {
 public:
  void OnDuration(float /*seconds*/) override { Throw(); }
  void OnBufferedTime(float /*seconds*/) override { Throw(); }
  void OnAudioClock(float /*seconds*/) override { Throw(); }
  void OnAudioFrame(MediaFrame /*frame*/) override { Throw(); }
  void OnVideoFrame(MediaFrame /*frame*/) override { Throw(); }
  void OnMessage(std::string /*line*/) override { Throw(); }
  void OnPlayResult(std::string /*line*/) override { Throw(); }

  std::atomic<int> calls{0};

 private:
  void Throw() {
    ++calls;
    throw std::runtime_error("boom");
  }
};

#endif  // TESTS_SUPPORT_THROWING_PLAYER_H_
