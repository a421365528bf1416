// A player that records every call.
#ifndef TESTS_MSVC_RECORDER_H_
#define TESTS_MSVC_RECORDER_H_

#include <stream_player.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "system.h"

class Lock {
 public:
  explicit Lock(void*& lock) : lock_(&lock) { AcquireSRWLockExclusive(lock_); }
  ~Lock() { ReleaseSRWLockExclusive(lock_); }
  Lock(const Lock&) = delete;
  Lock& operator=(const Lock&) = delete;

 private:
  void** lock_;
};

class Recorder : public CStreamPlayerImp {
 public:
  void OnDuration(float seconds) override;
  void OnBufferedTime(float seconds) override;
  void OnAudioClock(float seconds) override;
  void OnAudioFrame(MediaFrame frame) override;
  void OnVideoFrame(MediaFrame frame) override;
  void OnMessage(std::string line) override;
  void OnPlayResult(std::string line) override;

  // From now on frames and durations are printed as they are received.
  void PrintAll() { prints_all_ = true; }

  std::string LastMessage() const;
  bool HasMessage(const std::string& begin) const;
  bool HasResult(const std::string& line) const;
  std::uint64_t Messages() const;
  std::uint64_t Frames() const;
  std::uint64_t FirstVideoPlayTime() const;

  // From now on, until Forget, any call is a failure.
  void ExpectNoCall();
  void Forget();

  // Waits until `is_met(*this)`, at most 20 seconds.
  template <typename Condition>
  void WaitUntil(const char* what, const Condition& is_met) const;

 private:
  // The first lines of each kind are kept, later ones are only counted. Few are kept, because no
  // object may fill a page of the stack: there is no __chkstk.
  static constexpr std::size_t kKept = 16;

  struct Lines {
    std::string kept[kKept];
    std::string last;
    std::uint64_t count = 0;

    void Record(const std::string& line);
  };

  void Record(const char* kind, std::uint64_t index, const MediaFrame& frame);
  void Record(const char* kind, float seconds);
  void Record(Lines& lines, const std::string& line);
  void ExpectIsOpen() const;

  mutable void* lock_ = nullptr;  // an SRWLOCK; guards all of the following
  Lines messages_;
  Lines results_;
  std::uint64_t video_frames_ = 0;
  std::uint64_t audio_frames_ = 0;
  std::uint64_t first_video_play_time_ = 0;
  float last_clock_ = -1;
  bool prints_all_ = false;
  bool expects_no_call_ = false;
};

[[noreturn]] void FailWaiting(const char* what);

template <typename Condition>
void Recorder::WaitUntil(const char* what, const Condition& is_met) const {
  for (int i = 0; i < 20'000; ++i) {
    if (is_met(*this)) return;
    Sleep(1);
  }
  FailWaiting(what);
}

#endif  // TESTS_MSVC_RECORDER_H_
