#include "silent_sound_device.h"

#include <cstddef>
#include <utility>
#include <vector>

namespace player {

void SilentSoundDevice::Start(Source source) {
  taker_ = std::thread([this, source = std::move(source)] { TakePortions(source); });
}

void SilentSoundDevice::TakePortions(const Source& source) {
  std::vector<float> unheard(static_cast<std::size_t>(kSoundPortion) * kSoundChannels);
  double next_ms = clock_.NowMs();
  std::unique_lock lock(mutex_);
  while (!ending_) {
    lock.unlock();
    source(unheard, clock_.NowMs() / 1000 + kSoundPortionSeconds);
    lock.lock();
    next_ms += kSoundPortionSeconds * 1000;
    clock_.WaitUntil(lock, end_, next_ms, [this] { return ending_; });
  }
}

void SilentSoundDevice::End() {
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  end_.notify_all();
  if (taker_.joinable()) taker_.join();
}

}  // namespace player
