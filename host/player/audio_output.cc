#include "audio_output.h"

#include <algorithm>

namespace player {

AudioOutput::AudioOutput(AudioDevice& device) : device_(device) {
  device_.Start([this](std::span<float> out, double heard_at) { Fill(out, heard_at); });
}

void AudioOutput::Play(AudioBuffer* buffer) {
  const std::lock_guard lock(mutex_);
  buffer_ = buffer;
}

void AudioOutput::Fill(std::span<float> out, double heard_at) {
  const std::lock_guard lock(mutex_);
  if (buffer_ == nullptr) {
    std::fill(out.begin(), out.end(), 0.0F);
    return;
  }
  buffer_->Fill(out, heard_at);
}

}  // namespace player
