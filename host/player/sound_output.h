// What the sound device is given: the sound of what is played now, else silence.
#ifndef HOST_PLAYER_SOUND_OUTPUT_H_
#define HOST_PLAYER_SOUND_OUTPUT_H_

#include <mutex>
#include <span>

#include "sound_buffer.h"
#include "sound_device.h"

namespace player {

class SoundOutput {
 public:
  // Starts `device`, which is borrowed, and stops it at the end.
  explicit SoundOutput(SoundDevice& device);
  ~SoundOutput() { device_.Stop(); }

  SoundOutput(const SoundOutput&) = delete;
  SoundOutput& operator=(const SoundOutput&) = delete;

  // What is played from now on; borrowed, null for nothing. What was given before is not looked at
  // any more when this returns.
  void Play(SoundBuffer* sound);

 private:
  void Fill(std::span<float> out, double heard_at);

  SoundDevice& device_;
  std::mutex mutex_;
  SoundBuffer* sound_ = nullptr;  // guarded by mutex_
};

}  // namespace player

#endif  // HOST_PLAYER_SOUND_OUTPUT_H_
