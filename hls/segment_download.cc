#include "hls/segment_download.h"

#include <cstring>
#include <mutex>
#include <utility>
#include <vector>

#include "common/clock.h"
#include "common/console.h"
#include "common/format_text.h"
#include "common/user_agent.h"
#include "hls/hls_state.h"
#include "hls/segment_queue.h"
#include "hls/segment_states.h"
#include "ts/ts_packet.h"

namespace {

// Number of bytes at the start of g_downloadBuffer that a failed download left there. Guarded by
// g_downloadMutex.
std::int32_t g_leftoverLength = 0;

// Drops the leftover bytes to free space for the current segment.
void DropLeftover() {
  g_downloadLength -= g_leftoverLength;
  std::memmove(g_downloadBuffer->data(), g_downloadBuffer->data() + g_leftoverLength,
               static_cast<std::size_t>(g_downloadLength));
  g_leftoverLength = 0;
}

bool Fits(std::size_t length) {
  return length <= kSegmentBufferSize - static_cast<std::size_t>(g_downloadLength);
}

// Truncates a partial body to whole packets. The next segment is appended to them, and its packets
// must stay aligned. Requires g_downloadMutex.
void KeepWholePackets() {
  g_downloadLength -= g_downloadLength % static_cast<std::int32_t>(kTsPacketSize);
}

// Requires g_downloadMutex.
bool FetchSegment(HlsPipeline& pipeline, const std::string& url) {
  CURL* const handle = pipeline.segmentHandle.get();
  if (handle == nullptr || !pipeline.running.load()) return false;
  g_leftoverLength = g_downloadLength;
  const Transfer transfer{url, GuardedCallback<TakeSegmentBytes>, nullptr, pipeline.running,
                          pipeline.silence_limit};
  SetUpTransfer(handle, transfer);
  SetUserAgent(handle, url);
  return PerformTransfer(handle, transfer) == CURLE_OK;
}

// Waits until the parse thread has finished the previous segment, then swaps the buffers. Returns
// without a swap if the pipeline is stopped. Requires g_downloadMutex.
void HandOver(const HlsPipeline& pipeline) {
  {
    std::unique_lock lock(g_segmentQueueMutex);
    CurrentClock().Wait(*g_segmentQueueCond, lock, [&pipeline] {
      return g_parseLength.load() == 0 || !pipeline.running.load();
    });
    if (!pipeline.running.load()) return;
  }
  std::swap(g_parseBuffer, g_downloadBuffer);
  g_parseLength = std::exchange(g_downloadLength, 0);
}

void FetchAndHandOver(HlsPipeline& pipeline, const std::string& url) {
  const std::lock_guard lock(g_downloadMutex);
  if (FetchSegment(pipeline, url)) {
    SetSegmentState(url, kSegmentDownloaded);
    HandOver(pipeline);
  } else {
    KeepWholePackets();
    RecordSegmentDone(url);
  }
}

void DownloadPart(HlsPipeline& pipeline, const QueuedSegment& queued) {
  const M3u8Entry& segment = queued.entry;
  const float position = pipeline.position += segment.duration;
  if (pipeline.startPosition.load() > position) {
    RecordSegmentDone(segment.uri);
    return;
  }
  if (!IsReplaced(queued)) FetchAndHandOver(pipeline, segment.uri);
  pipeline.player.BufferedTime(position);
}

}  // namespace

std::size_t TakeSegmentBytes(char* data, std::size_t size, std::size_t count, void* /*user*/) {
  const std::size_t length = size * count;
  if (!ActiveM3u8Runs()) return 0;
  if (!Fits(length) && g_leftoverLength > 0) DropLeftover();
  if (!Fits(length)) {
    ConsoleLine(FormatText("A segment of more than %d bytes is given up.",
                           static_cast<int>(kSegmentBufferSize)));
    g_downloadLength = 0;
    g_leftoverLength = 0;
    return 0;
  }
  if (length > 0) std::memcpy(g_downloadBuffer->data() + g_downloadLength, data, length);
  g_downloadLength += static_cast<std::int32_t>(length);
  return length;
}

void DownloadPartsThread(HlsPipeline& pipeline) {
  SegmentHistory history;
  while (pipeline.running.load()) {
    const std::vector<QueuedSegment> batch = TakeQueuedSegments(pipeline, history);
    pipeline.player.Duration(pipeline.queuedDuration.load());
    for (const QueuedSegment& segment : batch) {
      if (!pipeline.running.load()) break;
      DownloadPart(pipeline, segment);
    }
    SleepFor(std::chrono::milliseconds(1));
  }
  ConsoleLine("m3u8 DownloadParts thread stop.");
}
