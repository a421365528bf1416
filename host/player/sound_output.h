// What the audio device receives: the audio of the current playback, or silence.
#ifndef HOST_PLAYER_SOUND_OUTPUT_H_
#define HOST_PLAYER_SOUND_OUTPUT_H_

#include <mutex>
#include <span>

#include "sound_buffer.h"
#include "sound_device.h"

namespace player {

class SoundOutput {
 public:
  // Starts `device`, which is borrowed, and stops it in the destructor.
  explicit SoundOutput(SoundDevice& device);
  ~SoundOutput() { device_.Stop(); }

  SoundOutput(const SoundOutput&) = delete;
  SoundOutput& operator=(const SoundOutput&) = delete;

  // Sets the audio to play from now on; borrowed, null for silence. When it returns, the previous
  // buffer is no longer used.
  void Play(SoundBuffer* sound);

 private:
  void Fill(std::span<float> out, double heard_at);

  SoundDevice& device_;
  std::mutex mutex_;
  SoundBuffer* sound_ = nullptr;  // guarded by mutex_
};

}  // namespace player

#endif  // HOST_PLAYER_SOUND_OUTPUT_H_
