// A player that blocks in its first audio frame, and the memory that is held for frames meanwhile.
#ifndef TESTS_SUPPORT_BLOCKED_AUDIO_H_
#define TESTS_SUPPORT_BLOCKED_AUDIO_H_

#include <cstddef>
#include <future>
#include <mutex>

#include "common/frame_memory.h"
#include "common/frame_queue.h"
#include "tests/support/recording_player.h"
#include "tests/support/wait_until.h"

// From its construction, before anything plays, to its destruction.
class BlockedAudio {
 public:
  explicit BlockedAudio(RecordingPlayer& player) {
    player.during_audio = [released = release_.get_future().share()] { released.wait(); };
  }
  ~BlockedAudio() { release_.set_value(); }

  // Whether what is held soon is what is queued and no more than 16 MiB beside it.
  static bool HoldsLittleBesideTheQueues() {
    constexpr std::size_t kMostBeyond = std::size_t{16} << 20;
    return WaitUntil([] {
      const std::lock_guard lock(g_frameQueueMutex);
      return HeldPayloadMemory() <= g_videoQueue->heldBytes + g_audioQueue->heldBytes + kMostBeyond;
    });
  }

 private:
  std::promise<void> release_;
};

#endif  // TESTS_SUPPORT_BLOCKED_AUDIO_H_
