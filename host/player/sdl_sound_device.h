// The system's audio device, through SDL.
#ifndef HOST_PLAYER_SDL_SOUND_DEVICE_H_
#define HOST_PLAYER_SDL_SOUND_DEVICE_H_

#include <memory>
#include <string>

#include "clock.h"
#include "sound_device.h"

namespace player {

class SdlSoundDevice final : public SoundDevice {
 public:
  // Returns null if there is no device; `error` then says why. `clock` is borrowed. SDL's audio
  // must be initialised before, if possible.
  static std::unique_ptr<SdlSoundDevice> Open(const host::Clock& clock, std::string& error);
  ~SdlSoundDevice() override { Close(); }

  void Start(Source source) override;
  void Stop() override { Close(); }

 private:
  explicit SdlSoundDevice(const host::Clock& clock) : clock_(clock) {}
  void Close();
  static void Fill(void* self, unsigned char* bytes, int size);

  const host::Clock& clock_;
  unsigned device_ = 0;
  Source source_;  // set before the device's first request
};

}  // namespace player

#endif  // HOST_PLAYER_SDL_SOUND_DEVICE_H_
