// The stream time that is due now. The sound leads it: what is heard says what time it is. Between
// two such moments, and where there is no sound, it goes on by itself. It stands still while the
// player is paused, and while there is nothing to play.
//
// Where the times of a stream jump, the clock jumps when the sound from after the jump is heard,
// not when the device asks for it. The stretches between jumps are segments; times of different
// segments cannot be compared.
//
// All times are seconds; `now` is the host's time, which never runs backwards. Safe from any
// thread.
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
  // What a sound is to the one before it.
  enum class Order { kFollows, kJumps };

  struct StreamTime {
    double seconds = 0;
    std::uint64_t segment = 0;
  };

  // From now on time goes by, beginning at `stream`, in a new segment.
  void Start(double stream, double now);
  bool HasStarted() const;

  // From the moment `at`, which may be a little ahead, the sound of the time `stream` is heard.
  // Moments that follow each other closely are smoothed.
  void Hear(double stream, double at, Order order = Order::kFollows);
  // From the moment `at` no sound is heard.
  void HearNothing(double at);

  void SetPaused(bool paused, double now);
  void SetStarved(bool starved, double now);
  bool IsPaused() const;
  // Whether it was started and does not stand still.
  bool IsRunning() const;

  // The stream time that is due; nothing before the start.
  std::optional<StreamTime> TimeAt(double now) const;
  std::optional<double> At(double now) const;
  // The stream time of the very sound that is heard, not smoothed; nothing while none is.
  std::optional<StreamTime> SoundAt(double now) const;
  std::optional<double> HeardAt(double now) const;

 private:
  // Counts from the moment `from` on: at the moment `moment` it is `stream`.
  struct Line {
    double from = 0;
    double stream = 0;
    double moment = 0;
    std::uint64_t segment = 0;

    double At(double now) const { return stream + (now - moment); }
  };
  struct Sound {
    double from = 0;
    std::optional<double> stream;  // of what is heard at the moment `from`
    std::uint64_t segment = 0;
  };

  // All with mutex_ held.
  const Line& LineAt(double now) const;
  bool IsHeld() const { return paused_ || starved_; }
  void SetHeld(bool& reason, bool held, double now);
  void FollowSound(double stream, double at, Order order);

  mutable std::mutex mutex_;
  bool started_ = false;  // all below guarded by mutex_
  bool paused_ = false;
  bool starved_ = false;
  std::uint64_t segment_ = 0;  // the newest
  // The newest is the last. While the clock is held, one line, which stands still.
  std::deque<Line> lines_{Line{}};
  std::deque<Sound> sounds_;
};

}  // namespace player

#endif  // HOST_PLAYER_PLAY_CLOCK_H_
