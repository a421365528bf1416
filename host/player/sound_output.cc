#include "sound_output.h"

#include <SDL.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <vector>

namespace player {
namespace {

constexpr int kPortion = kSoundRate / 50;
constexpr double kPortionSeconds = static_cast<double>(kPortion) / kSoundRate;

}  // namespace

SoundOutput::SoundOutput(const host::Clock& clock) : clock_(clock) {
  SDL_AudioSpec wanted{};
  wanted.freq = kSoundRate;
  wanted.format = AUDIO_F32SYS;
  wanted.channels = kSoundChannels;
  wanted.samples = kPortion;
  wanted.callback = FillForDevice;
  wanted.userdata = this;
  device_ = SDL_OpenAudioDevice(nullptr, 0, &wanted, nullptr, 0);
  if (device_ != 0) {
    SDL_PauseAudioDevice(device_, 0);
    return;
  }
  why_silent_ = SDL_GetError();
  taker_ = std::thread([this] { TakeInSilence(); });
}

SoundOutput::~SoundOutput() {
  if (device_ != 0) SDL_CloseAudioDevice(device_);
  {
    const std::lock_guard lock(mutex_);
    ending_ = true;
  }
  end_.notify_all();
  if (taker_.joinable()) taker_.join();
}

void SoundOutput::Play(SoundBuffer* sound) {
  const std::lock_guard lock(mutex_);
  sound_ = sound;
}

// A portion is heard when the one before it has been played.
void SoundOutput::Fill(std::span<float> out) {
  const std::lock_guard lock(mutex_);
  if (sound_ == nullptr) {
    std::fill(out.begin(), out.end(), 0.0F);
    return;
  }
  sound_->Fill(out, clock_.NowMs() / 1000 + kPortionSeconds);
}

void SoundOutput::TakeInSilence() {
  std::vector<float> unheard(static_cast<std::size_t>(kPortion) * kSoundChannels);
  auto next = std::chrono::steady_clock::now();
  std::unique_lock lock(mutex_);
  while (!ending_) {
    lock.unlock();
    Fill(unheard);
    lock.lock();
    next += std::chrono::milliseconds(1000 / 50);
    end_.wait_until(lock, next, [this] { return ending_; });
  }
}

void SoundOutput::FillForDevice(void* self, unsigned char* bytes, int size) {
  const auto samples = static_cast<std::size_t>(size) / sizeof(float);
  static_cast<SoundOutput*>(self)->Fill({reinterpret_cast<float*>(bytes), samples});
}

}  // namespace player
