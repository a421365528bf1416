// The player that the component calls: copies the frames into a queue, where the call waits for
// room, and keeps what else it is told.
//
// The calls come from threads of the component; the rest is for the thread that owns the receiver.
// While nothing is played there may be no queue; else it must be closed before the stop, which
// waits for the calls.
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

// The newest of each.
struct StreamNews {
  std::optional<float> duration;
  std::optional<float> buffered;
  std::string status;
};

class FrameReceiver final : public CStreamPlayerImp {
 public:
  // All are borrowed. Every call is passed on to `witness`, unless it is null.
  FrameReceiver(const host::Clock& clock, PlayCounts& counts, CStreamPlayerImp* witness = nullptr)
      : clock_(clock), counts_(counts), witness_(witness) {}

  void OnDuration(float seconds) override;
  void OnBufferedTime(float seconds) override;
  void OnAudioClock(float seconds) override;
  void OnAudioFrame(MediaFrame frame) override;
  void OnVideoFrame(MediaFrame frame) override;
  void OnMessage(std::string line) override;
  void OnPlayResult(std::string line) override;

  // Where frames go from now on; borrowed, null for nowhere. No call may be under way.
  // What was told of how far the stream has come is forgotten.
  void SetQueue(FrameQueue* queue);

  // When anything came last, by the clock.
  double LastArrivalMs() const { return last_arrival_ms_.load(); }
  StreamNews News() const;
  // Whether the address plays as FLV.
  bool IsFlv() const { return is_flv_.load(); }

  // The times of the stream, in seconds: where the first frames lie that ever came, and the
  // farthest so far. Nothing before any.
  std::optional<double> OriginSeconds() const;
  std::optional<double> FarthestSeconds() const;
  // From now on the origin stays as it is.
  void KeepOrigin() { origin_is_kept_ = true; }

 private:
  // Runs what a call of the component makes; what it throws is counted.
  template <typename Call>
  void Guarded(const Call& call);
  void TakeLine(std::string line);
  void TakeFrame(Kind kind, const MediaFrame& frame);
  void NoteTimes(Kind kind, std::uint64_t pts);
  void Arrived() { last_arrival_ms_ = clock_.NowMs(); }

  const host::Clock& clock_;
  PlayCounts& counts_;
  CStreamPlayerImp* const witness_;
  std::atomic<FrameQueue*> queue_{nullptr};
  std::atomic<double> last_arrival_ms_{0};
  std::atomic<bool> is_flv_{false};
  std::atomic<bool> origin_is_kept_{false};
  mutable std::mutex mutex_;
  StreamNews news_;                        // all below guarded by mutex_
  bool seen_[2] = {false, false};          // of each kind
  std::optional<std::uint64_t> origin_;    // 90 kHz
  std::optional<std::uint64_t> farthest_;  // 90 kHz
};

}  // namespace player

#endif  // HOST_PLAYER_FRAME_RECEIVER_H_
