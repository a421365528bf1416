// Decoded audio that waits for the device. The device gets silence until the audio is due and where
// there is none. Handing out audio sets the clock.
//
// When the buffer is full, the producer waits. Safe from any thread: one producer, one consumer.
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

  // Waits for space. Returns false if the buffer was closed; the piece is then dropped.
  bool Push(AudioPiece piece);

  // Fills `out`. Its first sample will be heard at the moment `heard_at`.
  void Fill(std::span<float> out, double heard_at);

  // The stream time of the next audio; nullopt if the buffer is empty.
  std::optional<double> NextSeconds() const;
  bool IsEmpty() const;

  // Releases a waiting producer, empties the buffer and keeps it closed.
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
  std::condition_variable space_available_;
  std::deque<AudioPiece> pieces_;  // all below guarded by mutex_
  std::size_t frames_ = 0;         // audio frames in all pieces
  std::size_t taken_ = 0;          // audio frames taken from the first piece
  std::optional<double> ended_;    // end of the audio handed out last, in stream time
  bool dry_ = false;               // whether the device asked for more audio than there was
  bool closed_ = false;
};

}  // namespace player

#endif  // HOST_PLAYER_SOUND_BUFFER_H_
