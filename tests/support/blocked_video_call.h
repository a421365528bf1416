// A player that blocks in its first video frame, and a check that a stop waits for that call.
#ifndef TESTS_SUPPORT_BLOCKED_VIDEO_CALL_H_
#define TESTS_SUPPORT_BLOCKED_VIDEO_CALL_H_

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <memory>
#include <utility>

#include "public/stream_downloader.h"
#include "tests/support/recording_player.h"
#include "tests/support/wait_until.h"

// Blocks the first video call of a player. Make it before anything plays. Its destruction releases
// the call, so that a failed test does not hang.
class BlockedVideoCall {
 public:
  explicit BlockedVideoCall(RecordingPlayer& player) {
    player.during_video = [call = call_] {
      if (!call->entered.exchange(true)) call->released.wait();
    };
    player.during_audio = [call = call_] {
      if (!call->has_audio_worker.exchange(true)) call->worker_end.set_value_at_thread_exit();
    };
  }
  ~BlockedVideoCall() { Release(); }
  BlockedVideoCall(const BlockedVideoCall&) = delete;
  BlockedVideoCall& operator=(const BlockedVideoCall&) = delete;

  bool WaitUntilEntered() {
    return WaitUntil([this] { return call_->entered.load(); });
  }
  void Release() {
    if (!std::exchange(is_released_, true)) release_.set_value();
  }

  // Waits until the worker that delivers audio has ended. Workers outlive their tasks and end when
  // their pool is stopped. Audio must have been delivered.
  bool WaitUntilThePoolIsStopped() {
    return audio_worker_ended_.wait_for(kTestLimit) == std::future_status::ready;
  }

 private:
  // State shared with the player's callbacks, which may outlive this object.
  struct Call {
    explicit Call(std::shared_future<void> when) : released(std::move(when)) {}

    std::atomic<bool> entered{false};
    std::atomic<bool> has_audio_worker{false};
    std::promise<void> worker_end;  // set when the first thread that delivers audio exits
    const std::shared_future<void> released;
  };

  bool is_released_ = false;
  std::promise<void> release_;
  const std::shared_ptr<Call> call_ = std::make_shared<Call>(release_.get_future().share());
  const std::future<void> audio_worker_ended_ = call_->worker_end.get_future();
};

// `end` stops what the player of the blocked call plays. It must wait for that call and for nothing
// else. Audio must have been delivered before. Returns the result of `end`.
template <typename End>
auto StopDuringBlockedCall(BlockedVideoCall& call, const End& end) {
  auto ended = std::async(std::launch::async, end);
  // From here on the stop can wait only for the worker in the blocked call.
  EXPECT_TRUE(call.WaitUntilThePoolIsStopped());
  EXPECT_EQ(ended.wait_for(std::chrono::seconds(0)), std::future_status::timeout)
      << "the stop does not wait for the player's call";
  call.Release();
  return ended.get();
}

inline bool StopDuringBlockedCall(BlockedVideoCall& call, CStreamDownloader& facade) {
  return StopDuringBlockedCall(call, [&facade] { return facade.EndDownload(); });
}

#endif  // TESTS_SUPPORT_BLOCKED_VIDEO_CALL_H_
