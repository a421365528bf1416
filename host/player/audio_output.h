// What the audio device receives: the audio of the current playback, or silence.
#ifndef HOST_PLAYER_AUDIO_OUTPUT_H_
#define HOST_PLAYER_AUDIO_OUTPUT_H_

#include <mutex>
#include <span>

#include "audio_buffer.h"
#include "audio_device.h"

namespace player {

class AudioOutput {
 public:
  // Starts `device`, which is borrowed, and stops it in the destructor.
  explicit AudioOutput(AudioDevice& device);
  ~AudioOutput() { device_.Stop(); }

  AudioOutput(const AudioOutput&) = delete;
  AudioOutput& operator=(const AudioOutput&) = delete;

  // Sets the audio to play from now on; borrowed, null for silence. When it returns, the previous
  // buffer is no longer used.
  void Play(AudioBuffer* buffer);

 private:
  void Fill(std::span<float> out, double heard_at);

  AudioDevice& device_;
  std::mutex mutex_;
  AudioBuffer* buffer_ = nullptr;  // guarded by mutex_
};

}  // namespace player

#endif  // HOST_PLAYER_AUDIO_OUTPUT_H_
