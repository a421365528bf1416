// A blocked audio call of a player, and a check of the memory held for frames meanwhile.
#ifndef TESTS_SUPPORT_BLOCKED_AUDIO_CALL_H_
#define TESTS_SUPPORT_BLOCKED_AUDIO_CALL_H_

#include <cstddef>
#include <future>
#include <mutex>

#include "common/frame_memory.h"
#include "common/frame_queue.h"
#include "tests/support/recording_player.h"
#include "tests/support/wait_until.h"

namespace stream {

// Blocks the audio calls of a player. Make it before anything plays. Its destruction releases them.
class BlockedAudioCall {
 public:
  explicit BlockedAudioCall(RecordingPlayer& player) {
    player.during_audio = [released = release_.get_future().share()] { released.wait(); };
  }
  ~BlockedAudioCall() { release_.set_value(); }

  // Waits until the memory held for payloads exceeds the queued bytes by no more than 16 MiB.
  static bool WaitUntilMemoryIsNearQueueSize() {
    constexpr std::size_t kMaxBeyond = std::size_t{16} << 20;
    return WaitUntil([] {
      const std::lock_guard lock(g_frameQueueMutex);
      return HeldPayloadMemory() <= g_videoQueue->heldBytes + g_audioQueue->heldBytes + kMaxBeyond;
    });
  }

 private:
  std::promise<void> release_;
};

}  // namespace stream

#endif  // TESTS_SUPPORT_BLOCKED_AUDIO_CALL_H_
