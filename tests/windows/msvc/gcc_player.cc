// A player compiled by GCC, for a process whose other players are compiled as by Visual C++.
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <new>
#include <string>
#include <utility>

#include "public/stream_downloader.h"
#include "tests/support/test_limit.h"

namespace {

class Player final : public CStreamPlayerImp {
 public:
  void OnDuration(float) override {}
  void OnBufferedTime(float) override {}
  void OnAudioClock(float) override {}
  void OnAudioFrame(MediaFrame) override { CountFrame(); }
  void OnVideoFrame(MediaFrame) override { CountFrame(); }
  void OnMessage(std::string line) override {
    const std::lock_guard lock(mutex_);
    last_message_ = std::move(line);
  }
  void OnPlayResult(std::string) override {}

  std::string LastMessage() {
    const std::lock_guard lock(mutex_);
    return last_message_;
  }
  bool WaitForFrames(std::uint64_t count) {
    std::unique_lock lock(mutex_);
    return received_.wait_for(lock, kTestLimit, [&] { return frames_ >= count; });
  }

 private:
  void CountFrame() {
    const std::lock_guard lock(mutex_);
    ++frames_;
    received_.notify_all();
  }

  std::mutex mutex_;
  std::condition_variable received_;
  std::string last_message_;  // guarded by mutex_, as is the next
  std::uint64_t frames_ = 0;
};

}  // namespace

extern "C" {

__declspec(dllexport) std::size_t GccPlayerSize() { return sizeof(Player); }

// The player is never destroyed.
__declspec(dllexport) void GccPlayerMakeAt(void* memory) { new (memory) Player; }

// Whether an address with an unknown scheme is reported to the player unchanged. The facade is
// never destroyed, so that a player of another compiler may be created at an address that a facade
// refers to.
__declspec(dllexport) bool GccPlayerEcho(void* memory, const char* text, std::size_t length) {
  auto& player = *static_cast<Player*>(memory);
  auto* const facade = new CStreamDownloader(&player);
  const std::string address(text, length);
  return !facade->BeginDownload(address) && player.LastMessage() == "PLAY UNKOWN:" + address;
}

// Plays until the player has received `frames` frames of both kinds together.
__declspec(dllexport) bool GccPlayerPlay(void* memory, const char* address, std::uint64_t frames) {
  auto& player = *static_cast<Player*>(memory);
  CStreamDownloader facade(&player);
  return facade.BeginDownload(address) && player.WaitForFrames(frames) && facade.EndDownload();
}

}  // extern "C"
