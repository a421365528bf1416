#include "hls/segment_parse.h"

#include <cstdio>
#include <utility>

#include "common/clock.h"
#include "common/console.h"
#include "common/frame_queue.h"
#include "common/queue_limit.h"
#include "common/temp_files.h"
#include "platform/files.h"
#include "ts/ts_demux.h"
#include "ts/ts_packet.h"
#include "ts/ts_stream_type.h"

namespace stream {
namespace {

constexpr char kStopLine[] = "m3u8 parse ts thread stop.";

// Feeds the pending segment to the demultiplexer, one packet per call, and drops a tail shorter
// than a packet. Returns false if the pipeline was stopped; the remaining packets would only be
// discarded.
bool FeedSegment(const HlsTaskState& hls, std::int32_t length, VideoArrivalDetector& video)
    REQUIRES(ProcessTsDemuxer().BatchMutex()) {
  const std::size_t packets = static_cast<std::size_t>(length) / kTsPacketSize;
  for (std::size_t i = 0; i < packets; ++i) {
    if (!hls.running.load()) return false;
    ts_demux_feed(hls.stream.g_parseBuffer->data() + i * kTsPacketSize,
                  static_cast<std::int32_t>(kTsPacketSize));
    video.Seen();  // check now: queued frames may be discarded before the segment ends
  }
  return true;
}

// temp_files.h describes what is logged if the file cannot be opened.
void KeepForInspection(const SegmentBuffer& segment, std::int32_t length, const char* mode) {
  const platform::File file = OpenTempFile("tmpE.ts", mode);
  if (file == nullptr) return;
  std::fwrite(segment.data(), 1, static_cast<std::size_t>(length), file.get());
}

std::string CodecName(std::uint8_t stream_type) {
  if (stream_type == kStreamTypeH264) return "H264";
  if (stream_type == kStreamTypeH265) return "H265";
  return std::to_string(stream_type);
}

// What is reported about the first segment.
struct FirstSegment {
  bool is_next = true;
  std::string status;
};

// Parses the pending segment. Returns false if there is none or the pipeline was stopped.
bool ParseSegment(HlsTaskState& hls, FirstSegment& first) {
  HlsStream& stream = hls.stream;
  {
    const TsDemuxLock lock;
    const std::int32_t length = stream.g_parseLength.load();
    if (length < 1) return false;
    VideoArrivalDetector video;
    if (!FeedSegment(hls, length, video)) return false;
    const bool has_video = video.Seen();
    const bool begins_file = first.is_next && hls.player;
    if (!has_video && begins_file) first.status = "DATAERR ";
    if (!has_video) KeepForInspection(*stream.g_parseBuffer, length, begins_file ? "wb+" : "ab+");
    if (first.is_next) first.status += CodecName(ts_last_stream_type.load());
    stream.g_parseLength = 0;
  }
  stream.WakeTasks();  // the segment thread may hand over the next segment
  return true;
}

}  // namespace

VideoArrivalDetector::Count VideoArrivalDetector::Now() {
  const MutexLock lock(g_frameQueueMutex);
  return {FrameQueueRun(), g_videoQueue == nullptr ? 0 : g_videoQueue->pushed};
}

bool VideoArrivalDetector::Seen() {
  if (seen_) return true;
  const Count now = Now();
  const Count before = std::exchange(last_, now);
  seen_ = now.pushed > (now.run == before.run ? before.pushed : 0);
  return seen_;
}

void ParseSegmentsThread(HlsTaskState& hls, const std::string& url) {
  FirstSegment first;
  while (hls.running.load()) {
    WaitForQueueSpace(hls.running, kDefaultQueueLimit);
    if (ParseSegment(hls, first) && first.is_next) {
      hls.player.Message("PLAY M3U8 " + first.status + ":" + url);
      first.is_next = false;
    }
    SleepFor(std::chrono::milliseconds(1));
  }
  ConsoleLine(kStopLine);
  hls.player.Message(kStopLine);
}

}  // namespace stream
