// Initialises SDL and shuts it down. Main thread only.
#ifndef HOST_PLAYER_SDL_SYSTEM_H_
#define HOST_PLAYER_SDL_SYSTEM_H_

#include <string>

namespace player {

class SdlSystem {
 public:
  SdlSystem();
  ~SdlSystem();
  SdlSystem(const SdlSystem&) = delete;
  SdlSystem& operator=(const SdlSystem&) = delete;

  // Why there is no display or no audio; empty if there is.
  const std::string& display_error() const { return display_error_; }
  const std::string& audio_error() const { return audio_error_; }

 private:
  std::string display_error_;
  std::string audio_error_;
};

}  // namespace player

#endif  // HOST_PLAYER_SDL_SYSTEM_H_
