// The player that the component calls. It copies frames into a queue, blocking the call while the
// queue is full, and stores the other values.
//
// The component's threads make the player calls; all other methods are for the thread that owns the
// receiver. There is no queue while nothing is played. Close the queue before EndDownload, which
// waits for player calls to return.
#ifndef HOST_PLAYER_FRAME_RECEIVER_H_
#define HOST_PLAYER_FRAME_RECEIVER_H_

#include <atomic>
#include <cstdint>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

#include "clock.h"
#include "frame_queue.h"
#include "play_counts.h"
#include "stream_player.h"

namespace player {

// The latest value of each.
struct StreamStatus {
  std::optional<float> duration;
  std::optional<float> buffered;
  std::string status;
};

class FrameReceiver final : public CStreamPlayerImp {
 public:
  // All references are borrowed. Every call is also passed on to `observer`, unless it is null.
  FrameReceiver(const host::Clock& clock, PlayCounts& counts, CStreamPlayerImp* observer = nullptr)
      : clock_(clock), counts_(counts), observer_(observer) {}

  void OnDuration(float seconds) override;
  void OnBufferedTime(float seconds) override;
  void OnAudioClock(float seconds) override;
  void OnAudioFrame(MediaFrame frame) override;
  void OnVideoFrame(MediaFrame frame) override;
  void OnMessage(std::string line) override;
  void OnPlayResult(std::string line) override;

  // Sets the queue for the frames that follow; borrowed, null to drop them. Call it only while no
  // player call is running. It resets the buffered time and FarthestSeconds.
  void SetQueue(FrameQueue* queue);

  // The time of the last call from the component, by the host's clock.
  double LastArrivalMs() const { return last_arrival_ms_.load(); }
  StreamStatus LatestStatus() const;
  // Whether the stream plays as FLV.
  bool IsFlv() const { return is_flv_.load(); }

  // Stream times in seconds. The origin is the smaller pts of the first video frame and the first
  // audio frame; the farthest is the largest pts since SetQueue. nullopt before the first frame.
  std::optional<double> OriginSeconds() const;
  std::optional<double> FarthestSeconds() const;
  // Fixes the origin at its current value.
  void KeepOrigin() { origin_is_kept_ = true; }

 private:
  // Runs the body of a player call and counts an exception as an error.
  template <typename Call>
  void Guarded(const Call& call);
  void RecordLine(std::string line);
  void QueueFrame(Kind kind, const MediaFrame& frame);
  void RecordTimes(Kind kind, std::uint64_t pts);
  void RecordArrival() { last_arrival_ms_ = clock_.NowMs(); }

  const host::Clock& clock_;
  PlayCounts& counts_;
  CStreamPlayerImp* const observer_;
  std::atomic<FrameQueue*> queue_{nullptr};
  std::atomic<double> last_arrival_ms_{0};
  std::atomic<bool> is_flv_{false};
  std::atomic<bool> origin_is_kept_{false};
  mutable std::mutex mutex_;
  StreamStatus latest_;                    // all below guarded by mutex_
  bool seen_[2] = {false, false};          // whether a frame of each kind was received
  std::optional<std::uint64_t> origin_;    // 90 kHz
  std::optional<std::uint64_t> farthest_;  // 90 kHz
};

}  // namespace player

#endif  // HOST_PLAYER_FRAME_RECEIVER_H_
