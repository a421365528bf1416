// CallbackPlayer: a player that forwards every call to the host's callbacks.
#ifndef C_INTERFACE_CALLBACK_PLAYER_H_
#define C_INTERFACE_CALLBACK_PLAYER_H_

#include <string>
#include <type_traits>

#include "callback_scope.h"
#include "stream_downloader_c.h"
#include "stream_player.h"

// Keeps a copy of the struct. Safe to call from any thread.
class CallbackPlayer final : public CStreamPlayerImp {
 public:
  explicit CallbackPlayer(const sd_callbacks& callbacks) : callbacks_(callbacks) {}

  void OnDuration(float seconds) override;
  void OnBufferedTime(float seconds) override;
  void OnAudioClock(float seconds) override;
  void OnAudioFrame(MediaFrame frame) override;
  void OnVideoFrame(MediaFrame frame) override;
  void OnMessage(std::string line) override;
  void OnPlayResult(std::string line) override;

 private:
  template <typename... Arguments>
  void Call(void (*callback)(void*, Arguments...),
            std::type_identity_t<Arguments>... arguments) const {
    if (callback == nullptr) return;
    const CallbackScope scope;
    callback(callbacks_.user, arguments...);
  }

  const sd_callbacks callbacks_;
};

#endif  // C_INTERFACE_CALLBACK_PLAYER_H_
