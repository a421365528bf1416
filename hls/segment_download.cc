#include "hls/segment_download.h"

#include <cstring>
#include <mutex>
#include <utility>

#include "common/clock.h"
#include "common/console.h"
#include "common/format_text.h"
#include "common/user_agent.h"
#include "ts/ts_packet.h"

namespace stream {
namespace {

// Drops the leftover bytes to free space for the current segment. Requires download_mutex.
void DropLeftover(HlsStream& stream) {
  stream.g_downloadLength -= stream.leftover_length;
  std::uint8_t* const bytes = stream.g_downloadBuffer->data();
  std::memmove(bytes, bytes + stream.leftover_length,
               static_cast<std::size_t>(stream.g_downloadLength));
  stream.leftover_length = 0;
}

// Requires download_mutex.
bool Fits(const HlsStream& stream, std::size_t length) {
  return length <= kSegmentBufferSize - static_cast<std::size_t>(stream.g_downloadLength);
}

// Truncates a partial body to whole packets. The next segment is appended to them, and its packets
// must stay aligned. Requires download_mutex.
void KeepWholePackets(HlsStream& stream) {
  stream.g_downloadLength -= stream.g_downloadLength % static_cast<std::int32_t>(kTsPacketSize);
}

// Requires download_mutex.
bool FetchSegment(HlsPipeline& pipeline, const std::string& url) {
  CURL* const handle = pipeline.segmentHandle.get();
  if (handle == nullptr || !pipeline.running.load()) return false;
  HlsStream& stream = pipeline.stream;
  stream.leftover_length = stream.g_downloadLength;
  const Transfer transfer{url, GuardedCallback<OnSegmentBytes>, &stream, pipeline.running,
                          pipeline.silence_limit};
  SetUpTransfer(handle, transfer);
  SetUserAgent(handle, url);
  return PerformTransfer(handle, transfer) == CURLE_OK;
}

// Waits until the parse thread has finished the previous segment, then swaps the buffers. Returns
// without a swap if the pipeline is stopped. Requires download_mutex.
void HandOver(const HlsPipeline& pipeline) {
  HlsStream& stream = pipeline.stream;
  {
    std::unique_lock lock(stream.g_segmentQueueMutex);
    CurrentClock().Wait(stream.g_segmentQueueCond, lock, [&pipeline, &stream] {
      return stream.g_parseLength.load() == 0 || !pipeline.running.load();
    });
    if (!pipeline.running.load()) return;
  }
  std::swap(stream.g_parseBuffer, stream.g_downloadBuffer);
  stream.g_parseLength = std::exchange(stream.g_downloadLength, 0);
}

void FetchAndHandOver(HlsPipeline& pipeline, const std::string& url) {
  HlsStream& stream = pipeline.stream;
  const std::lock_guard lock(stream.download_mutex);
  if (FetchSegment(pipeline, url)) {
    stream.ledger.SetSegmentState(url, kSegmentDownloaded);
    HandOver(pipeline);
  } else {
    KeepWholePackets(stream);
    stream.ledger.RecordDone(url);
  }
}

void DownloadPart(HlsPipeline& pipeline, const QueuedSegment& queued) {
  const M3u8Entry& segment = queued.entry;
  SegmentLedger& ledger = pipeline.stream.ledger;
  const float position = pipeline.position += segment.duration;
  if (pipeline.startPosition.load() > position) {
    ledger.RecordDone(segment.uri);
    return;
  }
  if (!ledger.IsReplaced(queued)) FetchAndHandOver(pipeline, segment.uri);
  pipeline.player.BufferedTime(position);
}

// Moves everything out of the queue once there is something to do. Requires no lock.
std::vector<QueuedSegment> PopQueue(const HlsPipeline& pipeline, SegmentHistory& history) {
  HlsStream& stream = pipeline.stream;
  std::vector<QueuedSegment> waiting;
  std::unique_lock lock(stream.g_segmentQueueMutex);
  CurrentClock().Wait(stream.g_segmentQueueCond, lock, [&pipeline, &stream] {
    return !stream.g_segmentQueue.empty() || stream.on_demand_queued || !pipeline.running.load();
  });
  waiting.swap(stream.g_segmentQueue);
  stream.on_demand_queued = false;
  stream.ledger.BeginBatch(history, waiting);
  return waiting;
}

}  // namespace

std::vector<QueuedSegment> PopQueuedSegments(HlsPipeline& pipeline, SegmentHistory& history) {
  std::vector<QueuedSegment> batch;
  for (QueuedSegment& segment : PopQueue(pipeline, history)) {
    if (!pipeline.running.load()) break;
    if (!pipeline.stream.ledger.InsertIfNew(history, segment)) continue;
    pipeline.queuedDuration += segment.entry.duration;
    batch.push_back(std::move(segment));
  }
  return batch;
}

std::size_t OnSegmentBytes(char* data, std::size_t size, std::size_t count, void* user) {
  HlsStream& stream = *static_cast<HlsStream*>(user);
  const std::size_t length = size * count;
  if (!stream.ActiveRuns()) return 0;
  if (!Fits(stream, length) && stream.leftover_length > 0) DropLeftover(stream);
  if (!Fits(stream, length)) {
    ConsoleLine(FormatText("A segment of more than %d bytes is given up.",
                           static_cast<int>(kSegmentBufferSize)));
    stream.g_downloadLength = 0;
    stream.leftover_length = 0;
    return 0;
  }
  if (length > 0)
    std::memcpy(stream.g_downloadBuffer->data() + stream.g_downloadLength, data, length);
  stream.g_downloadLength += static_cast<std::int32_t>(length);
  return length;
}

void DownloadPartsThread(HlsPipeline& pipeline) {
  SegmentHistory history;
  while (pipeline.running.load()) {
    const std::vector<QueuedSegment> batch = PopQueuedSegments(pipeline, history);
    pipeline.player.Duration(pipeline.queuedDuration.load());
    for (const QueuedSegment& segment : batch) {
      if (!pipeline.running.load()) break;
      DownloadPart(pipeline, segment);
    }
    SleepFor(std::chrono::milliseconds(1));
  }
  ConsoleLine("m3u8 DownloadParts thread stop.");
}

}  // namespace stream
