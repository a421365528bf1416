// The system's audio device, through SDL.
#ifndef HOST_PLAYER_SDL_AUDIO_DEVICE_H_
#define HOST_PLAYER_SDL_AUDIO_DEVICE_H_

#include <memory>
#include <string>

#include "audio_device.h"
#include "clock.h"

namespace player {

class SdlAudioDevice final : public AudioDevice {
 public:
  // Returns null if there is no device; `error` then says why. `clock` is borrowed. SDL's audio
  // must be initialised before, if possible.
  static std::unique_ptr<SdlAudioDevice> Open(const host::Clock& clock, std::string& error);
  ~SdlAudioDevice() override { Close(); }

  void Start(Source source) override;
  void Stop() override { Close(); }

 private:
  explicit SdlAudioDevice(const host::Clock& clock) : clock_(clock) {}
  void Close();
  static void Fill(void* self, unsigned char* bytes, int size);

  const host::Clock& clock_;
  unsigned device_ = 0;
  Source source_;  // set before the device's first request
};

}  // namespace player

#endif  // HOST_PLAYER_SDL_AUDIO_DEVICE_H_
