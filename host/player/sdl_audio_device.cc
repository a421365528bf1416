#include "sdl_audio_device.h"

#include <SDL.h>

#include <cstddef>
#include <utility>

namespace player {

std::unique_ptr<SdlAudioDevice> SdlAudioDevice::Open(const host::Clock& clock, std::string& error) {
  std::unique_ptr<SdlAudioDevice> made(new SdlAudioDevice(clock));
  SDL_AudioSpec wanted{};
  wanted.freq = kAudioSampleRate;
  wanted.format = AUDIO_F32SYS;
  wanted.channels = kAudioChannels;
  wanted.samples = kPortionFrames;
  wanted.callback = Fill;
  wanted.userdata = made.get();
  made->device_ = SDL_OpenAudioDevice(nullptr, 0, &wanted, nullptr, 0);
  if (made->device_ != 0) return made;
  error = SDL_GetError();
  return nullptr;
}

// SDL opens a device paused.
void SdlAudioDevice::Start(Source source) {
  source_ = std::move(source);
  SDL_PauseAudioDevice(device_, 0);
}

void SdlAudioDevice::Close() {
  if (device_ != 0) SDL_CloseAudioDevice(std::exchange(device_, 0));
}

void SdlAudioDevice::Fill(void* self, unsigned char* bytes, int size) {
  const auto* device = static_cast<SdlAudioDevice*>(self);
  const auto samples = static_cast<std::size_t>(size) / sizeof(float);
  // This portion is heard when the previous one has been played.
  const double heard_at = device->clock_.NowMs() / 1000 + kPortionSeconds;
  device->source_({reinterpret_cast<float*>(bytes), samples}, heard_at);
}

}  // namespace player
