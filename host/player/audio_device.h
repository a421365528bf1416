// An audio device, or a replacement for one, which requests audio in portions.
#ifndef HOST_PLAYER_AUDIO_DEVICE_H_
#define HOST_PLAYER_AUDIO_DEVICE_H_

#include <functional>
#include <span>

#include "audio_chunk.h"

namespace player {

// In audio frames. A portion is requested while the previous one is played.
inline constexpr int kPortionFrames = kAudioSampleRate / 50;
inline constexpr double kPortionSeconds = static_cast<double>(kPortionFrames) / kAudioSampleRate;

class AudioDevice {
 public:
  // Fills a portion with interleaved samples of the two channels. The first sample is heard at the
  // moment `heard_at`, in seconds by the host's clock. Called from one thread of the device.
  using Source = std::function<void(std::span<float> portion, double heard_at)>;

  virtual ~AudioDevice() = default;

  // Starts to request audio from `source`. Call it once.
  virtual void Start(Source source) = 0;
  // When it returns, `source` is no longer called. May be called without a start, and repeatedly.
  virtual void Stop() = 0;
};

}  // namespace player

#endif  // HOST_PLAYER_AUDIO_DEVICE_H_
