// Replaces a missing audio device: a thread requests portions of audio at the same pace, so that
// the stream plays at normal speed.
#ifndef HOST_PLAYER_SILENT_SOUND_DEVICE_H_
#define HOST_PLAYER_SILENT_SOUND_DEVICE_H_

#include <condition_variable>
#include <mutex>
#include <thread>

#include "clock.h"
#include "sound_device.h"

namespace player {

class SilentSoundDevice final : public SoundDevice {
 public:
  // `clock` is borrowed.
  explicit SilentSoundDevice(const host::Clock& clock) : clock_(clock) {}
  ~SilentSoundDevice() override { End(); }

  void Start(Source source) override;
  void Stop() override { End(); }

 private:
  void TakePortions(const Source& source);
  void End();

  const host::Clock& clock_;
  std::mutex mutex_;
  bool ending_ = false;  // guarded by mutex_
  std::condition_variable end_;
  std::thread taker_;
};

}  // namespace player

#endif  // HOST_PLAYER_SILENT_SOUND_DEVICE_H_
