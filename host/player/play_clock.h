// The stream time that is due now. Audio sets the clock: the stream time of the audio being heard
// is the current time. Between two portions, and without audio, the clock runs on its own. It is
// held while the player is paused and while there is nothing to play.
//
// When the times of a stream jump, the clock jumps when the audio after the jump is heard, not when
// the device requests it. The parts between jumps are segments; times of different segments cannot
// be compared.
//
// All times are seconds; `now` is the host's time, which never goes back. Safe from any thread.
#ifndef HOST_PLAYER_PLAY_CLOCK_H_
#define HOST_PLAYER_PLAY_CLOCK_H_

#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>

namespace player {

// Stream times further apart than this do not belong together: the times have jumped.
inline constexpr double kFarApart = 10;

class PlayClock {
 public:
  // How a chunk of audio relates to the previous one.
  enum class Order { kContinues, kJumps };

  struct StreamTime {
    double seconds = 0;
    std::uint64_t segment = 0;
  };

  // Starts the clock at the stream time `stream`, in a new segment.
  void Start(double stream, double now);
  bool HasStarted() const;

  // The audio of the stream time `stream` is heard from the moment `at`, which may be slightly in
  // the future. Small deviations from the clock are smoothed.
  void Hear(double stream, double at, Order order = Order::kContinues);
  // No audio is heard from the moment `at`.
  void MarkSilence(double at);

  void SetPaused(bool paused, double now);
  void SetStarved(bool starved, double now);
  bool IsPaused() const;
  // Whether the clock has been started and is not held.
  bool IsRunning() const;

  // The stream time due at `now`; nullopt before the start.
  std::optional<StreamTime> TimeAt(double now) const;
  std::optional<double> At(double now) const;
  // The exact stream time of the audio heard at `now`, not smoothed; nullopt if none is heard.
  std::optional<StreamTime> AudioAt(double now) const;
  std::optional<double> HeardAt(double now) const;

 private:
  // In effect from the moment `from`. At `moment` the stream time is `stream`.
  struct Line {
    double from = 0;
    double stream = 0;
    double moment = 0;
    std::uint64_t segment = 0;

    double At(double now) const { return stream + (now - moment); }
  };
  struct HeardAudio {
    double from = 0;
    std::optional<double> stream;  // of the audio heard at `from`; nullopt for silence
    std::uint64_t segment = 0;
  };

  // All with mutex_ held.
  const Line& LineAt(double now) const;
  bool IsHeld() const { return paused_ || starved_; }
  void SetHeld(bool& reason, bool held, double now);
  void SyncToAudio(double stream, double at, Order order);

  mutable std::mutex mutex_;
  bool started_ = false;  // all below guarded by mutex_
  bool paused_ = false;
  bool starved_ = false;
  std::uint64_t segment_ = 0;  // of the latest line
  // The latest is last. While the clock is held there is one line, and its `stream` is the time.
  std::deque<Line> lines_{Line{}};
  std::deque<HeardAudio> heard_audio_;
};

}  // namespace player

#endif  // HOST_PLAYER_PLAY_CLOCK_H_
