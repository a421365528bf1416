// One start of a stream, from frames to decoded pictures and audio: the frame queue, two decoding
// threads, their output queues, and the clock. Each seek creates a new one.
#ifndef HOST_PLAYER_PLAYBACK_H_
#define HOST_PLAYER_PLAYBACK_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <thread>
#include <vector>

#include "access_units.h"
#include "audio_buffer.h"
#include "bounded_queue.h"
#include "frame_queue.h"
#include "play_clock.h"
#include "play_counts.h"
#include "video_decoder.h"

namespace player {

class Playback {
 public:
  struct Settings {
    // Called when the first picture is decoded; see PictureTimes.
    std::function<bool()> pictures_shown_later;
    // Whether the first audio frame may be a remainder of the previous start, without a time.
    bool may_begin_with_leftover = false;
    QueueLimits limits;
  };

  // `counts` is borrowed.
  Playback(PlayCounts& counts, Settings settings);
  ~Playback();

  Playback(const Playback&) = delete;
  Playback& operator=(const Playback&) = delete;

  // Releases waiting player calls and makes the decoding threads end.
  void Close();

  FrameQueue& frames() { return frames_; }
  BoundedQueue<Picture>& pictures() { return pictures_; }
  const BoundedQueue<Picture>& pictures() const { return pictures_; }
  AudioBuffer& audio() { return audio_; }
  PlayClock& clock() { return clock_; }
  const PlayClock& clock() const { return clock_; }

  // Starts the clock when playing can begin, and holds it while there is nothing to play. Call it
  // repeatedly; `now` is in seconds.
  void Tick(double now);

  // If `ended`, the decoders output all remaining pictures. Frames may still arrive afterwards.
  void SetStreamEnded(bool ended) { frames_.SetEnded(ended); }
  // Whether everything received has been played.
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
  AudioBuffer audio_;
  std::optional<double> first_ready_;  // when the first picture or audio was available
  std::atomic<bool> closed_{false};
  std::atomic<bool> video_pending_{false};  // whether the gatherer or decoder holds back pictures
  // Used by the video thread only.
  AccessUnitGatherer gatherer_;
  std::optional<VideoDecoder> decoder_;
  std::uint64_t skipped_units_ = 0;  // units skipped by the gatherer that are already in counts_
  // Used by the audio thread only.
  bool audio_started_ = false;
  // Declared last, since the threads use the members above.
  std::thread video_thread_;
  std::thread audio_thread_;
};

}  // namespace player

#endif  // HOST_PLAYER_PLAYBACK_H_
