#include "silent_audio_device.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace player {

void SilentAudioDevice::Start(Source source) {
  thread_ = std::thread([this, source = std::move(source)] { RequestPortions(source); });
}

void SilentAudioDevice::RequestPortions(const Source& source) {
  std::vector<float> discarded(static_cast<std::size_t>(kPortionFrames) * kAudioChannels);
  double next_ms = clock_.NowMs();
  std::unique_lock lock(mutex_);
  while (!ending_) {
    lock.unlock();
    source(discarded, clock_.NowMs() / 1000 + kPortionSeconds);
    lock.lock();
    next_ms += kPortionSeconds * 1000;
    clock_.WaitUntil(lock, end_, next_ms, [this] { return ending_; });
  }
}

void SilentAudioDevice::End() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  end_.notify_all();
  if (thread_.joinable()) thread_.join();
}

}  // namespace player
