// Decoded sound that waits for the device, and what the device is given: silence until the sound is
// due and where there is none. Giving sound out sets the clock.
//
// Bounded by making the giver wait. Safe from any thread: one gives and one takes.
#ifndef HOST_PLAYER_SOUND_BUFFER_H_
#define HOST_PLAYER_SOUND_BUFFER_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <span>

#include "play_clock.h"
#include "sound_piece.h"

namespace player {

class SoundBuffer {
 public:
  // `clock` is borrowed.
  explicit SoundBuffer(PlayClock& clock) : clock_(clock) {}

  // Waits for room. False when it was closed; then the piece is gone.
  bool Push(SoundPiece piece);

  // Fills `out`, whose first samples will be heard at the moment `heard_at`.
  void Fill(std::span<float> out, double heard_at);

  // The stream time of the sound that comes next.
  std::optional<double> NextSeconds() const;
  bool IsEmpty() const;

  // Lets a giver go who waits, empties the buffer, and keeps it closed.
  void Close();

 private:
  // All with mutex_ held.
  double Next() const;
  bool Follows() const;
  PlayClock::Order OrderOfNext() const;
  std::size_t SilenceBefore(double at) const;
  std::size_t Take(std::span<float> out);

  PlayClock& clock_;
  mutable std::mutex mutex_;
  std::condition_variable room_came_;
  std::deque<SoundPiece> pieces_;  // all below guarded by mutex_
  std::size_t frames_ = 0;         // in all pieces
  std::size_t taken_ = 0;          // of the first piece
  std::optional<double> ended_;    // where the sound ended that was given out last
  bool dry_ = false;               // whether there was less sound than the device asked for
  bool closed_ = false;
};

}  // namespace player

#endif  // HOST_PLAYER_SOUND_BUFFER_H_
