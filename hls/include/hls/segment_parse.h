// The parse thread: feeds the downloaded segments to the demultiplexer.
#ifndef HLS_SEGMENT_PARSE_H_
#define HLS_SEGMENT_PARSE_H_

#include <cstdint>
#include <string>

#include "common/run_id.h"
#include "hls/hls_task_state.h"

namespace stream {

// Detects whether video frames were queued since it was created, even if they have been delivered
// or if another start has replaced the queues.
class VideoArrivalDetector {
 public:
  VideoArrivalDetector() : last_(Now()) {}

  // Returns whether a video frame was queued. A frame is missed if the queues are replaced between
  // its arrival and the next call, so call this often.
  bool Seen();

 private:
  struct Count {
    RunId run;  // of the queues; `pushed` counts frames within it
    std::uint64_t pushed;
  };

  static Count Now();

  Count last_;
  bool seen_ = false;
};

// Runs until the pipeline is stopped. A segment without video is stored in the file "tmpE.ts" in
// the temporary directory, for inspection: the first segment of a run replaces the file, later ones
// are appended. Reports to the player what the first segment contains, with `url`.
void ParseSegmentsThread(HlsTaskState& hls, const std::string& url);

}  // namespace stream

#endif  // HLS_SEGMENT_PARSE_H_
