// Replaces a missing audio device: a thread requests portions of audio at the same pace, so that
// the stream plays at normal speed.
#ifndef HOST_PLAYER_SILENT_AUDIO_DEVICE_H_
#define HOST_PLAYER_SILENT_AUDIO_DEVICE_H_

#include <condition_variable>
#include <mutex>
#include <thread>

#include "audio_device.h"
#include "clock.h"

namespace player {

class SilentAudioDevice final : public AudioDevice {
 public:
  // `clock` is borrowed.
  explicit SilentAudioDevice(const host::Clock& clock) : clock_(clock) {}
  ~SilentAudioDevice() override { End(); }

  void Start(Source source) override;
  void Stop() override { End(); }

 private:
  void RequestPortions(const Source& source);
  void End();

  const host::Clock& clock_;
  std::mutex mutex_;
  bool ending_ = false;  // guarded by mutex_
  std::condition_variable end_;
  std::thread thread_;
};

}  // namespace player

#endif  // HOST_PLAYER_SILENT_AUDIO_DEVICE_H_
