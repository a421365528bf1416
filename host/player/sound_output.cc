#include "sound_output.h"

#include <algorithm>

namespace player {

SoundOutput::SoundOutput(SoundDevice& device) : device_(device) {
  device_.Start([this](std::span<float> out, double heard_at) { Fill(out, heard_at); });
}

void SoundOutput::Play(SoundBuffer* sound) {
  const std::lock_guard lock(mutex_);
  sound_ = sound;
}

void SoundOutput::Fill(std::span<float> out, double heard_at) {
  const std::lock_guard lock(mutex_);
  if (sound_ == nullptr) {
    std::fill(out.begin(), out.end(), 0.0F);
    return;
  }
  sound_->Fill(out, heard_at);
}

}  // namespace player
