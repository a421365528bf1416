#include "hls/segment_download.h"

#include <cstring>
#include <utility>

#include "common/clock.h"
#include "common/console.h"
#include "common/format_text.h"
#include "common/user_agent.h"
#include "ts/ts_packet.h"

namespace stream {
namespace {

// Drops the leftover bytes to free space for the current segment.
void DropLeftover(HlsStream& stream) REQUIRES(stream.download_mutex) {
  stream.g_downloadLength -= stream.leftover_length;
  std::uint8_t* const bytes = stream.g_downloadBuffer->data();
  std::memmove(bytes, bytes + stream.leftover_length,
               static_cast<std::size_t>(stream.g_downloadLength));
  stream.leftover_length = 0;
}

bool Fits(const HlsStream& stream, std::size_t length) REQUIRES(stream.download_mutex) {
  return length <= kSegmentBufferSize - static_cast<std::size_t>(stream.g_downloadLength);
}

// Truncates a partial body to whole packets. The next segment is appended to them, and its packets
// must stay aligned.
void KeepWholePackets(HlsStream& stream) REQUIRES(stream.download_mutex) {
  stream.g_downloadLength -= stream.g_downloadLength % static_cast<std::int32_t>(kTsPacketSize);
}

bool FetchSegment(HlsTaskState& hls, const std::string& url) REQUIRES(hls.stream.download_mutex) {
  CURL* const handle = hls.segmentHandle.get();
  if (handle == nullptr || !hls.running.load()) return false;
  hls.stream.leftover_length = hls.stream.g_downloadLength;
  const Transfer transfer{url, GuardedCallback<OnSegmentBytes>, &hls.stream, hls.running,
                          hls.silence_limit};
  SetUpTransfer(handle, transfer);
  SetUserAgent(handle, url);
  return PerformTransfer(handle, transfer) == CURLE_OK;
}

// Waits until the parse thread has finished the previous segment, then swaps the buffers. Returns
// without a swap if the pipeline is stopped.
void HandOver(HlsStream& stream, const std::atomic<bool>& running) REQUIRES(stream.download_mutex) {
  {
    const MutexLock lock(stream.g_segmentQueueMutex);
    CurrentClock().Wait(stream.g_segmentQueueCond, stream.g_segmentQueueMutex, [&stream, &running] {
      return stream.g_parseLength.load() == 0 || !running.load();
    });
    if (!running.load()) return;
  }
  std::swap(stream.g_parseBuffer, stream.g_downloadBuffer);
  stream.g_parseLength = std::exchange(stream.g_downloadLength, 0);
}

void FetchAndHandOver(HlsTaskState& hls, const std::string& url) {
  const MutexLock lock(hls.stream.download_mutex);
  if (FetchSegment(hls, url)) {
    hls.stream.ledger.SetSegmentState(url, kSegmentDownloaded);
    HandOver(hls.stream, hls.running);
  } else {
    KeepWholePackets(hls.stream);
    hls.stream.ledger.RecordNotDownloaded(url);
  }
}

void DownloadPart(HlsTaskState& hls, const QueuedSegment& queued) {
  const M3u8Entry& segment = queued.entry;
  SegmentLedger& ledger = hls.stream.ledger;
  const float position = hls.position += segment.duration;
  if (hls.startPosition.load() > position) {
    ledger.RecordNotDownloaded(segment.uri);
    return;
  }
  if (!ledger.IsReplaced(queued)) FetchAndHandOver(hls, segment.uri);
  hls.player.BufferedTime(position);
}

// Moves everything out of the queue once there is something to do.
std::vector<QueuedSegment> PopQueue(const HlsTaskState& hls, SegmentHistory& history) {
  HlsStream& stream = hls.stream;
  std::vector<QueuedSegment> waiting;
  const MutexLock lock(stream.g_segmentQueueMutex);
  const auto has_work = [&hls, &stream]() REQUIRES(stream.g_segmentQueueMutex) {
    return !stream.g_segmentQueue.empty() || stream.on_demand_queued || !hls.running.load();
  };
  CurrentClock().Wait(stream.g_segmentQueueCond, stream.g_segmentQueueMutex, has_work);
  waiting.swap(stream.g_segmentQueue);
  stream.on_demand_queued = false;
  stream.ledger.BeginBatch(history, waiting);
  return waiting;
}

}  // namespace

std::vector<QueuedSegment> PopQueuedSegments(HlsTaskState& hls, SegmentHistory& history) {
  std::vector<QueuedSegment> batch;
  for (QueuedSegment& segment : PopQueue(hls, history)) {
    if (!hls.running.load()) break;
    if (!hls.stream.ledger.TakeIfNew(history, segment)) continue;
    hls.queuedDuration += segment.entry.duration;
    batch.push_back(std::move(segment));
  }
  return batch;
}

std::size_t OnSegmentBytes(char* data, std::size_t size, std::size_t count, void* user) {
  HlsStream& stream = *static_cast<HlsStream*>(user);
  stream.download_mutex.AssumeHeld();
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

void DownloadPartsThread(HlsTaskState& hls) {
  SegmentHistory history;
  while (hls.running.load()) {
    const std::vector<QueuedSegment> batch = PopQueuedSegments(hls, history);
    hls.player.Duration(hls.queuedDuration.load());
    for (const QueuedSegment& segment : batch) {
      if (!hls.running.load()) break;
      DownloadPart(hls, segment);
    }
    SleepFor(std::chrono::milliseconds(1));
  }
  ConsoleLine("m3u8 DownloadParts thread stop.");
}

}  // namespace stream
