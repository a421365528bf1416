// The sound device of the system, by SDL.
#ifndef HOST_PLAYER_SDL_SOUND_DEVICE_H_
#define HOST_PLAYER_SDL_SOUND_DEVICE_H_

#include <memory>
#include <string>

#include "clock.h"
#include "sound_device.h"

namespace player {

class SdlSoundDevice final : public SoundDevice {
 public:
  // Null when there is no device; then `error` says why. `clock` is borrowed. SDL's sound must be
  // initialised before, if it can be.
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
  Source source_;  // set before the device first asks
};

}  // namespace player

#endif  // HOST_PLAYER_SDL_SOUND_DEVICE_H_
