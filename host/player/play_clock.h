// The stream time that is due now. The sound leads it: what is heard says what time it is. Between
// two such moments, and where there is no sound, it goes on by itself. It stands still while the
// player is paused, and while there is nothing to play.
//
// All times are seconds; `now` is the host's time, which never runs backwards. Safe from any
// thread.
#ifndef HOST_PLAYER_PLAY_CLOCK_H_
#define HOST_PLAYER_PLAY_CLOCK_H_

#include <mutex>
#include <optional>

namespace player {

class PlayClock {
 public:
  // From now on time goes by, beginning at `stream`.
  void Start(double stream, double now);
  bool HasStarted() const;

  // At the moment `at`, which may lie a little ahead, the sound of the time `stream` is heard.
  // Moments that follow each other closely are smoothed.
  void Hear(double stream, double at);
  // From here on no sound is heard.
  void HearNothing();

  void SetPaused(bool paused, double now);
  void SetStarved(bool starved, double now);
  bool IsPaused() const;
  // Whether it was started and does not stand still.
  bool IsRunning() const;

  // The stream time that is due; nothing before the start.
  std::optional<double> At(double now) const;
  // The stream time of the very sound that is heard, not smoothed; nothing while none is.
  std::optional<double> HeardAt(double now) const;

 private:
  // All with mutex_ held.
  double StreamAt(double now) const;
  bool IsHeld() const { return paused_ || starved_; }
  void SetHeld(bool& reason, bool held, double now);

  mutable std::mutex mutex_;
  bool started_ = false;  // all below guarded by mutex_
  bool paused_ = false;
  bool starved_ = false;
  double stream_ = 0;  // the stream time at `moment_`
  double moment_ = 0;
  bool heard_ = false;
  double heard_stream_ = 0;
  double heard_moment_ = 0;
};

}  // namespace player

#endif  // HOST_PLAYER_PLAY_CLOCK_H_
