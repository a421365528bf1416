// What sound goes to: a device of the system or, where there is none, a thread that takes it as a
// device would, so that time goes by in the same way.
#ifndef HOST_PLAYER_SOUND_OUTPUT_H_
#define HOST_PLAYER_SOUND_OUTPUT_H_

#include <condition_variable>
#include <mutex>
#include <span>
#include <string>
#include <thread>

#include "clock.h"
#include "sound_buffer.h"

namespace player {

class SoundOutput {
 public:
  // `clock` is borrowed. SDL's sound must be initialised before, if it can be.
  explicit SoundOutput(const host::Clock& clock);
  ~SoundOutput();

  SoundOutput(const SoundOutput&) = delete;
  SoundOutput& operator=(const SoundOutput&) = delete;

  // Why there is no device; empty when there is one.
  const std::string& why_silent() const { return why_silent_; }

  // What is played from now on; borrowed, null for nothing. What was given before is not looked at
  // any more when this returns.
  void Play(SoundBuffer* sound);

 private:
  void Fill(std::span<float> out);
  void TakeInSilence();
  static void FillForDevice(void* self, unsigned char* bytes, int size);

  const host::Clock& clock_;
  unsigned device_ = 0;
  std::string why_silent_;
  std::mutex mutex_;
  SoundBuffer* sound_ = nullptr;  // guarded by mutex_
  bool ending_ = false;           // guarded by mutex_
  std::condition_variable end_;
  std::thread taker_;  // only without a device
};

}  // namespace player

#endif  // HOST_PLAYER_SOUND_OUTPUT_H_
