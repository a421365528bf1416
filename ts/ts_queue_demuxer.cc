#include "ts/ts_queue_demuxer.h"

#include "common/frame_queue.h"
#include "ts/ts_stream_type.h"

namespace stream {

void TsQueueDemuxer::Feed(const std::uint8_t* data, std::int32_t length) {
  FollowQueueResets();
  demuxer_.Feed(data, length);
}

void TsQueueDemuxer::ParsePackets(ts_context& context, const std::uint8_t* packets,
                                  std::int32_t count) {
  demuxer_.ParsePackets(context, packets, count);
}

void TsQueueDemuxer::Reset() {
  ts_last_stream_type = 0;
  demuxer_.Reset();
  video_play_times_ = PlayTimeInterpolator();
  audio_play_times_ = PlayTimeInterpolator();
}

void TsQueueDemuxer::OnFrame(const TsFrame& frame) {
  FrameRecord record;
  if (CreateFrameNode(record, frame.pts, frame.dts, frame.payload.data(),
                      static_cast<std::int32_t>(frame.payload.size()), frame.is_video,
                      frame.intact) != 0) {
    return;  // no memory: drop this frame and continue
  }
  const MutexLock lock(g_frameQueueMutex);
  FollowQueueResets();
  PlayTimeInterpolator& play_times = frame.is_video ? video_play_times_ : audio_play_times_;
  record.playTime = play_times.InitialPlayTime(record.pts);
  FrameQueue* queue = EnsureQueue(frame.is_video);
  if (PushFrame(record, queue) == 0) {
    play_times.FramePushed(*queue);
  } else {
    ReleasePayload(record);
  }
}

void TsQueueDemuxer::FollowQueueResets() {
  const RunId run = FrameQueueRun();
  if (run == queue_run_) return;
  queue_run_ = run;
  demuxer_.ResetStreams();
  video_play_times_ = PlayTimeInterpolator();
  audio_play_times_ = PlayTimeInterpolator();
}

}  // namespace stream
