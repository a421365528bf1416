// The process's transport stream demultiplexer, which the TS and HLS pipelines share. It outlives
// streams: programs, PIDs and unfinished frames of a stream are still there when the next one
// begins (TsDemuxer::ResetStreams).
#ifndef TS_TS_DEMUX_H_
#define TS_TS_DEMUX_H_

#include <cstdint>

#include "platform/mutex.h"
#include "ts/ts_context.h"
#include "ts/ts_queue_demuxer.h"

namespace stream {

TsQueueDemuxer& ProcessTsDemuxer();

/// Held by the thread that feeds the process's demultiplexer, for a whole batch. Never call the
/// player meanwhile.
class SCOPED_LOCK TsDemuxLock {
 public:
  TsDemuxLock() ACQUIRE(ProcessTsDemuxer().BatchMutex());
  ~TsDemuxLock() RELEASE() = default;
  TsDemuxLock(const TsDemuxLock&) = delete;
  TsDemuxLock& operator=(const TsDemuxLock&) = delete;

 private:
  MutexLock lock_;
};

/// Feeds the whole packets in `length` bytes at `data` to the process's demultiplexer. An
/// incomplete packet at the end is ignored. Returns 0.
std::int32_t ts_demux_feed(const std::uint8_t* data, std::int32_t length)
    REQUIRES(ProcessTsDemuxer().BatchMutex());

/// Passes `count` packets to the process's demultiplexer, to be demultiplexed with the programs and
/// PIDs of `context`. Returns 0. Nothing in the component calls it; the name is fixed. Kept for
/// compatibility.
std::int32_t ts_parse_packets(ts_context* context, const std::uint8_t* packets, std::int32_t count)
    REQUIRES(ProcessTsDemuxer().BatchMutex());

}  // namespace stream

#endif  // TS_TS_DEMUX_H_
