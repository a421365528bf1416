// A demultiplexer whose frames go into the global frame queues, with play times.
#ifndef TS_TS_QUEUE_DEMUXER_H_
#define TS_TS_QUEUE_DEMUXER_H_

#include <cstdint>
#include <mutex>

#include "common/run_id.h"
#include "ts/play_times.h"
#include "ts/ts_demuxer.h"
#include "ts/ts_frame_sink.h"

namespace stream {

/// After each ResetFrameQueues, the play times start again and TsDemuxer::ResetStreams is called.
/// It checks the run of the queues itself, so that common/ does not depend on it.
///
/// Threads: hold Mutex() from the first call of a batch to the last. Never call the player with it
/// held. g_frameQueueMutex may be taken while it is held, never the other way round.
class TsQueueDemuxer final : private TsFrameSink {
 public:
  TsQueueDemuxer() : demuxer_(*this) {}
  TsQueueDemuxer(const TsQueueDemuxer&) = delete;
  TsQueueDemuxer& operator=(const TsQueueDemuxer&) = delete;

  /// As the members of TsDemuxer with these names.
  void Feed(const std::uint8_t* data, std::int32_t length);
  void ParsePackets(ts_context& context, const std::uint8_t* packets, std::int32_t count);

  /// Resets everything to the state at process start, ts_last_stream_type too. Nothing in the
  /// component calls it: it is for tests, fuzzers and benchmarks.
  void Reset();

  std::mutex& Mutex() { return mutex_; }

 private:
  void OnFrame(const TsFrame& frame) override;
  void FollowQueueResets();

  std::mutex mutex_;

  // All guarded by mutex_.
  TsDemuxer demuxer_;
  PlayTimeInterpolator video_play_times_;
  PlayTimeInterpolator audio_play_times_;
  RunId queue_run_{};  // of the frame queues; the state of the streams belongs to it
};

}  // namespace stream

#endif  // TS_TS_QUEUE_DEMUXER_H_
