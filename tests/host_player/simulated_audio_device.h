// An audio device that plays by a simulated clock and knows which sample is heard at which moment.
#ifndef TESTS_HOST_PLAYER_SIMULATED_AUDIO_DEVICE_H_
#define TESTS_HOST_PLAYER_SIMULATED_AUDIO_DEVICE_H_

#include <cstddef>
#include <optional>
#include <utility>
#include <vector>

#include "host/player/audio_device.h"
#include "tests/host/simulated_clock.h"

namespace player {

// Requests a portion every 20 ms and plays it 20 ms later. For one thread.
class SimulatedAudioDevice final : public AudioDevice {
 public:
  struct Sample {
    float left = 0;
    float right = 0;
    double after = 0;  // seconds since the sample began
  };

  explicit SimulatedAudioDevice(host::SimulatedClock& clock) : clock_(clock) {}

  void Start(Source source) override {
    source_ = std::move(source);
    began_ms_ = clock_.NowMs();
    ExpectPortion();
  }
  void Stop() override { source_ = {}; }

  // Delays the requests for portions by these times, in turn. Each is shorter than a portion. The
  // portions are still played evenly.
  void DelayRequests(std::vector<double> delays_ms) { delays_ms_ = std::move(delays_ms); }

  // The sample that is heard at this moment, in seconds; nullopt before the first sample.
  std::optional<Sample> HeardAt(double seconds) const {
    constexpr double kRounding = 1e-9;
    const double since = seconds + kRounding - began_ms_ / 1000 - kPortionSeconds;
    const double frames = since * kAudioSampleRate;
    if (since < 0 || static_cast<std::size_t>(frames) * 2 >= played_.size()) return std::nullopt;
    const auto frame = static_cast<std::size_t>(frames);
    const double after = (frames - static_cast<double>(frame)) / kAudioSampleRate;
    return Sample{played_[frame * 2], played_[frame * 2 + 1], after};
  }

  // How many frames of audio were taken, without those of silence.
  std::size_t FramesHeard() const { return frames_heard_; }

 private:
  void ExpectPortion() {
    const double delay = delays_ms_.empty() ? 0 : delays_ms_[requests_ % delays_ms_.size()];
    const double even = began_ms_ + static_cast<double>(requests_) * kPortionSeconds * 1000;
    clock_.CallAt(even + delay, [this] { RequestPortion(); });
  }

  void RequestPortion() {
    if (!source_) return;
    std::vector<float> portion(static_cast<std::size_t>(kPortionFrames) * kAudioChannels, -1.0F);
    source_(portion, clock_.NowMs() / 1000 + kPortionSeconds);
    for (std::size_t i = 0; i < portion.size(); i += 2) {
      if (portion[i] != 0) ++frames_heard_;
    }
    played_.insert(played_.end(), portion.begin(), portion.end());
    ++requests_;
    ExpectPortion();
  }

  host::SimulatedClock& clock_;
  Source source_;
  double began_ms_ = 0;
  std::size_t requests_ = 0;
  std::vector<double> delays_ms_;
  std::vector<float> played_;
  std::size_t frames_heard_ = 0;
};

}  // namespace player

#endif  // TESTS_HOST_PLAYER_SIMULATED_AUDIO_DEVICE_H_
