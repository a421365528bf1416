// A player that records all calls and checks them at once: a call after the stop or an audio frame
// without its clock fails the test. Safe from any thread.
#ifndef TESTS_SUPPORT_RECORDING_PLAYER_H_
#define TESTS_SUPPORT_RECORDING_PLAYER_H_

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "public/stream_player.h"
#include "tests/support/test_limit.h"

struct RecordedFrame {
  std::uint64_t pts;
  std::uint64_t dts;
  std::uint64_t play_time;
  std::vector<std::uint8_t> payload;
};

class RecordingPlayer final : public CStreamPlayerImp {
 public:
  struct Record {
    std::vector<RecordedFrame> video;
    std::vector<RecordedFrame> audio;
    std::vector<float> clocks;
    std::vector<float> durations;
    std::vector<float> buffered_times;
    std::vector<std::string> messages;
    std::vector<std::string> results;

    bool HasMessage(const std::string& line) const {
      for (const std::string& message : messages) {
        if (message == line) return true;
      }
      return false;
    }
    // Messages that begin with `prefix`.
    std::vector<std::string> MessagesWith(const std::string& prefix) const {
      std::vector<std::string> found;
      for (const std::string& message : messages) {
        if (message.starts_with(prefix)) found.push_back(message);
      }
      return found;
    }
  };

  void OnDuration(float seconds) override {
    RecordCall([&](Record& record) { record.durations.push_back(seconds); });
  }
  void OnBufferedTime(float seconds) override {
    RecordCall([&](Record& record) { record.buffered_times.push_back(seconds); });
  }
  void OnAudioClock(float seconds) override {
    RecordCall([&](Record& record) {
      const bool is_new = pending_clocks_.emplace(std::this_thread::get_id(), seconds).second;
      EXPECT_TRUE(is_new) << "two audio clocks without a frame between them";
      record.clocks.push_back(seconds);
    });
  }
  void OnAudioFrame(MediaFrame frame) override {
    RecordCall([&](Record& record) {
      const auto clock = pending_clocks_.extract(std::this_thread::get_id());
      EXPECT_FALSE(clock.empty()) << "an audio frame without its clock";
      if (!clock.empty()) {
        const auto whole_seconds = frame.playTime / 90000;
        EXPECT_EQ(clock.mapped(), static_cast<float>(whole_seconds));
      }
      record.audio.push_back(Copy(frame));
    });
    if (during_audio) during_audio();
  }
  void OnVideoFrame(MediaFrame frame) override {
    RecordCall([&](Record& record) { record.video.push_back(Copy(frame)); });
    if (during_video) during_video();
  }
  void OnMessage(std::string line) override {
    RecordCall([&](Record& record) { record.messages.push_back(std::move(line)); });
  }
  void OnPlayResult(std::string line) override {
    RecordCall([&](Record& record) { record.results.push_back(std::move(line)); });
  }

  // From now on every call fails the test, until Reopen.
  void Close() {
    const std::lock_guard lock(mutex_);
    closed_ = true;
  }
  void Reopen() {
    const std::lock_guard lock(mutex_);
    closed_ = false;
  }

  Record Snapshot() const {
    const std::lock_guard lock(mutex_);
    return record_;
  }

  void Forget() {
    const std::lock_guard lock(mutex_);
    record_ = Record();
  }

  // Waits until `met` is true for the record. False if the time limit expires first.
  bool WaitFor(const std::function<bool(const Record&)>& met,
               std::chrono::milliseconds limit = kTestLimit) {
    std::unique_lock lock(mutex_);
    return changed_.wait_for(lock, limit, [&] { return met(record_); });
  }

  // Called inside each video or audio call, on the delivery thread. Set them before anything plays.
  std::function<void()> during_video;
  std::function<void()> during_audio;

 private:
  static RecordedFrame Copy(const MediaFrame& frame) {
    return {frame.pts, frame.dts, frame.playTime, {frame.data, frame.data + frame.size}};
  }

  template <typename Change>
  void RecordCall(Change change) {
    {
      const std::lock_guard lock(mutex_);
      EXPECT_FALSE(closed_) << "the player was called after the stop";
      change(record_);
    }
    changed_.notify_all();
  }

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  Record record_;
  // Clocks whose frame has not been delivered yet, by thread: after a second start two threads
  // deliver audio.
  std::map<std::thread::id, float> pending_clocks_;
  bool closed_ = false;
};

#endif  // TESTS_SUPPORT_RECORDING_PLAYER_H_
