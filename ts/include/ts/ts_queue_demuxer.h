// A demultiplexer whose frames go into the global frame queues, with play times.
#ifndef TS_TS_QUEUE_DEMUXER_H_
#define TS_TS_QUEUE_DEMUXER_H_

#include <cstdint>

#include "common/frame_queue.h"
#include "common/run_id.h"
#include "platform/mutex.h"
#include "ts/play_times.h"
#include "ts/ts_demuxer.h"
#include "ts/ts_frame_sink.h"

namespace stream {

/// After each ResetFrameQueues, the play times start again and TsDemuxer::ResetStreams is called.
/// The demultiplexer notices that itself (FrameQueueRun), so that common/ does not depend on it.
///
/// Threads: hold BatchMutex() from the first call of a batch to the last. Never call the player
/// while it is held.
class TsQueueDemuxer final : private TsFrameSink {
 public:
  TsQueueDemuxer() : demuxer_(*this) {}
  TsQueueDemuxer(const TsQueueDemuxer&) = delete;
  TsQueueDemuxer& operator=(const TsQueueDemuxer&) = delete;

  /// As the members of TsDemuxer with these names.
  void Feed(const std::uint8_t* data, std::int32_t length) REQUIRES(mutex_);
  void ParsePackets(ts_context& context, const std::uint8_t* packets, std::int32_t count)
      REQUIRES(mutex_);

  /// Resets everything to the state at process start, ts_last_stream_type too. Nothing in the
  /// component calls it: it is for tests, fuzzers and benchmarks.
  void Reset() REQUIRES(mutex_);

  Mutex& BatchMutex() RETURNS_MUTEX(mutex_) { return mutex_; }

 private:
  void OnFrame(const TsFrame& frame) REQUIRES(mutex_) override;
  void FollowQueueResets() REQUIRES(mutex_);

  Mutex mutex_ ACQUIRED_BEFORE(g_frameQueueMutex);
  TsDemuxer demuxer_ GUARDED_BY(mutex_);
  PlayTimeInterpolator video_play_times_ GUARDED_BY(mutex_);
  PlayTimeInterpolator audio_play_times_ GUARDED_BY(mutex_);
  // Of the frame queues; the state of the streams belongs to it.
  RunId queue_run_ GUARDED_BY(mutex_){};
};

}  // namespace stream

#endif  // TS_TS_QUEUE_DEMUXER_H_
