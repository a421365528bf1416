// What plays sound, or takes it as if it did, portion by portion.
#ifndef HOST_PLAYER_SOUND_DEVICE_H_
#define HOST_PLAYER_SOUND_DEVICE_H_

#include <functional>
#include <span>

#include "sound_piece.h"

namespace player {

// In frames. A portion is asked for while the one before it is played.
inline constexpr int kSoundPortion = kSoundRate / 50;
inline constexpr double kSoundPortionSeconds = static_cast<double>(kSoundPortion) / kSoundRate;

class SoundDevice {
 public:
  // Fills a portion, the samples of the two channels in turn. The first is heard at the moment
  // `heard_at`, in seconds by the host's clock. Called from one thread of the device.
  using Source = std::function<void(std::span<float> portion, double heard_at)>;

  virtual ~SoundDevice() = default;

  // From now on `source` is asked for sound. To be called once.
  virtual void Start(Source source) = 0;
  // When it returns, the source is asked no more. May be called without a start, and again.
  virtual void Stop() = 0;
};

}  // namespace player

#endif  // HOST_PLAYER_SOUND_DEVICE_H_
