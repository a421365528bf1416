// Decoded audio that waits for the device. The device gets silence until the audio is due and where
// there is none. Handing out audio sets the clock.
//
// When the buffer is full, the producer waits. Safe from any thread: one producer, one consumer.
#ifndef HOST_PLAYER_AUDIO_BUFFER_H_
#define HOST_PLAYER_AUDIO_BUFFER_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <mutex>
#include <optional>
#include <span>

#include "audio_chunk.h"
#include "play_clock.h"

namespace player {

class AudioBuffer {
 public:
  // `clock` is borrowed.
  explicit AudioBuffer(PlayClock& clock) : clock_(clock) {}

  // Waits for space. Returns false if the buffer was closed; the chunk is then dropped.
  bool Push(AudioChunk chunk);

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
  bool ContinuesPrevious() const;
  PlayClock::Order OrderOfNext() const;
  std::size_t SilenceBefore(double at) const;
  std::size_t CopyFromFirst(std::span<float> out);

  PlayClock& clock_;
  mutable std::mutex mutex_;
  std::condition_variable space_available_;
  std::deque<AudioChunk> chunks_;       // all below guarded by mutex_
  std::size_t frames_ = 0;              // audio frames in all chunks
  std::size_t consumed_ = 0;            // audio frames taken from the first chunk
  std::optional<double> previous_end_;  // end of the audio handed out last, in stream time
  bool underrun_ = false;               // whether the device asked for more audio than there was
  bool closed_ = false;
};

}  // namespace player

#endif  // HOST_PLAYER_AUDIO_BUFFER_H_
