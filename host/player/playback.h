// One start of a stream on its way from frames to pictures and sound: the queue, two decoding
// threads, what they made, and the clock. A seek makes a new one.
#ifndef HOST_PLAYER_PLAYBACK_H_
#define HOST_PLAYER_PLAYBACK_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

#include "access_units.h"
#include "bounded_queue.h"
#include "frame_queue.h"
#include "play_clock.h"
#include "play_counts.h"
#include "sound_buffer.h"
#include "video_decoder.h"

namespace player {

class Playback {
 public:
  struct Settings {
    // Asked when the first picture is decoded: what PictureTimes wants to know.
    std::function<bool()> pictures_shown_later;
    // Whether sound without a time may come first, left over from the start before.
    bool may_begin_with_leftover = false;
    QueueLimits limits;
  };

  // `counts` is borrowed.
  Playback(PlayCounts& counts, Settings settings);
  ~Playback();

  Playback(const Playback&) = delete;
  Playback& operator=(const Playback&) = delete;

  // Lets everything go that waits: calls of the component, and the decoding threads, which end.
  void Close();

  FrameQueue& frames() { return frames_; }
  BoundedQueue<Picture>& pictures() { return pictures_; }
  const BoundedQueue<Picture>& pictures() const { return pictures_; }
  SoundBuffer& sound() { return sound_; }
  PlayClock& clock() { return clock_; }
  const PlayClock& clock() const { return clock_; }

  // Starts the clock when it is time, and holds it while there is nothing to play. To be called
  // again and again; `now` in seconds.
  void Tick(double now);

  // Nothing more comes: what the decoders hold comes out. Frames may come again all the same.
  void SetStreamEnded(bool ended) { frames_.SetEnded(ended); }
  // Whether all was played that came.
  bool IsPlayedOut() const;

 private:
  void Guarded(const std::function<void()>& step);
  void DecodeVideo();
  void DecodeVideoUnits(const std::vector<MediaUnit>& units);
  void FinishVideo();
  void DecodeAudio();
  bool IsLeftover(const MediaUnit& frame);
  void TryToStart(double now);

  PlayCounts& counts_;
  const Settings settings_;
  FrameQueue frames_;
  BoundedQueue<Picture> pictures_;
  PlayClock clock_;
  SoundBuffer sound_;
  std::optional<double> first_ready_;  // when the first picture or sound was there
  std::atomic<bool> closed_{false};
  std::atomic<bool> video_held_{false};  // whether the gatherer or decoder holds anything back
  // Of the video thread only.
  AccessUnitGatherer gatherer_;
  std::optional<VideoDecoder> decoder_;
  std::uint64_t left_out_ = 0;  // by the gatherer, as far as it was counted
  // Of the audio thread only.
  bool audio_began_ = false;
  // Last, so that they run only while all above lives.
  std::thread video_thread_;
  std::thread audio_thread_;
};

}  // namespace player

#endif  // HOST_PLAYER_PLAYBACK_H_
