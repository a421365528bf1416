// TsBatchFeeder: feeds the received packets of the TS pipeline to the demultiplexer, in batches.
#ifndef TS_TS_BATCH_FEEDER_H_
#define TS_TS_BATCH_FEEDER_H_

#include "common/byte_buffer.h"
#include "ts/ts_demux.h"

namespace stream {

/// Each parse task has one, and uses it on its own thread.
///
/// A batch is not copied: its buffer is exchanged with g_tsStreamBuffer, so that the download waits
/// no longer than for a copy, and demultiplexing runs without g_tsStreamLock.
class TsBatchFeeder {
 public:
  /// Feeds all whole packets that are in g_tsStreamBuffer, one packet per call. Returns false if
  /// there are none or memory runs out. If g_tsRunning is cleared meanwhile, the rest is dropped.
  bool FeedBatch() EXCLUDES(ProcessTsDemuxer().BatchMutex());

 private:
  bool FetchBatch() REQUIRES(ProcessTsDemuxer().BatchMutex());

  CByteBuffer batch_;
};

}  // namespace stream

#endif  // TS_TS_BATCH_FEEDER_H_
