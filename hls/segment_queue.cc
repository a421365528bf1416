#include "hls/segment_queue.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <set>
#include <utility>

#include "common/console.h"
#include "common/format_text.h"
#include "hls/hls_state.h"
#include "hls/live_window.h"
#include "hls/playlist_fetch.h"
#include "hls/segment_states.h"

namespace {

// As many segments as the segment thread remembers at least.
constexpr std::size_t kRememberedSegments = 1000;

// Both guarded by g_segmentQueueMutex.
std::size_t g_listedSegments = 0;   // how many the live playlist lists
std::uint64_t g_sequenceEpoch = 0;  // counts the times that its sequence numbers began anew

bool IsSegment(const M3u8Entry& entry) { return entry.uri.find(".ts") != std::string::npos; }

std::size_t CountSegments(const M3u8Table& entries) {
  return static_cast<std::size_t>(std::count_if(
      entries.begin(), entries.end(), [](const auto& row) { return IsSegment(row.second); }));
}

void ConsoleCount(const char* tag, std::size_t count) {
  ConsoleText(FormatText("%s:%d", tag, static_cast<int>(count)));  // no line break, on purpose
}

// One playlist text on its way into the queue.
class PlaylistPass {
 public:
  PlaylistPass(HlsPipeline& pipeline, const std::string& url) : pipeline_(pipeline), url_(url) {}

  void Run();

 private:
  bool ParseTop();
  bool ParseVariant();
  void FollowSequence(std::int64_t first, const M3u8Table& entries);
  void QueueVariant(const M3u8Entry& variant);
  bool QueueIfNew(const M3u8Entry& segment);
  void NoteListed() const;

  HlsPipeline& pipeline_;
  const std::string& url_;
  M3u8Table top_;
  M3u8Table variantSegments_;
  std::set<std::string> listed_keys_;
  std::size_t newCount_ = 0;
};

// The media sequence begins anew: the segments that follow are others, whatever their names are.
void PlaylistPass::FollowSequence(std::int64_t first, const M3u8Table& entries) {
  if (!g_liveWindow.BeginsAnew(first, CountSegments(entries))) return;
  ForgetAllSegments();
  const std::lock_guard lock(*g_segmentQueueMutex);
  ++g_sequenceEpoch;
}

bool PlaylistPass::ParseTop() {
  M3u8Header header;
  std::int64_t mediaSequence = LiveWindow::kNoSequence;
  if (!ParseM3u8(header, url_, *g_playlistText, mediaSequence, top_)) return false;
  g_playlistText->clear();
  ConsoleCount("QUEUEED1", top_.size());
  FollowSequence(mediaSequence, top_);
  return true;
}

// Adds the segments of g_variantText. What a text without a header lists is dropped, and the text
// stays, for the next one to be appended to it (kept on purpose).
bool PlaylistPass::ParseVariant() {
  M3u8Header header;
  std::int64_t mediaSequence = LiveWindow::kNoSequence;
  M3u8Table entries;
  if (!ParseM3u8(header, url_, *g_variantText, mediaSequence, entries)) return false;
  g_variantText->clear();
  if (variantSegments_.empty()) FollowSequence(mediaSequence, entries);
  variantSegments_.merge(entries);
  ConsoleCount("QUEUEED2", variantSegments_.size());
  return true;
}

bool PlaylistPass::QueueIfNew(const M3u8Entry& segment) {
  listed_keys_.insert(MakeSegmentKey(segment.uri));
  if (!AddSegmentIfNew(segment.uri, kSegmentQueued)) return false;
  const std::lock_guard lock(*g_segmentQueueMutex);
  g_segmentQueue->push_back(segment);
  ++newCount_;
  return true;
}

void PlaylistPass::QueueVariant(const M3u8Entry& variant) {
  if (!FetchVariant(pipeline_, variant.uri) || !ParseVariant()) return;
  for (const auto& [index, segment] : variantSegments_) {
    if (IsSegment(segment) && QueueIfNew(segment)) ConsoleLine("[QUEUEED]: " + segment.uri);
  }
}

// A playlist that lists nothing, or whose variants could not be had, says nothing about what is
// still listed.
void PlaylistPass::NoteListed() const {
  if (listed_keys_.empty()) return;
  ForgetDoneSegments(listed_keys_);
  const std::lock_guard lock(*g_segmentQueueMutex);
  g_listedSegments = listed_keys_.size();
}

void PlaylistPass::Run() {
  if (!ParseTop()) return;
  for (const auto& [key, entry] : top_) {
    if (!pipeline_.running.load()) return;
    if (IsSegment(entry)) {
      QueueIfNew(entry);
    } else {
      QueueVariant(entry);
    }
  }
  NoteListed();
  if (newCount_ == 0) return;
  WakeHlsTasks();
  // Compared with the variants' segments alone, on purpose: for a playlist of segments all those
  // that were downloaded are forgotten, and queued once more at the next refresh. The segment
  // thread passes over them.
  RemoveStaleSegments(variantSegments_, kSegmentDownloaded);
}

}  // namespace

void QueueSegmentsFromPlaylist(HlsPipeline& pipeline, const std::string& playlistUrl) {
  const std::lock_guard lock(g_playlistMutex);
  PlaylistPass(pipeline, playlistUrl).Run();
}

void QueueAllSegments(HlsPipeline& pipeline, const M3u8Table& entries) {
  {
    const std::lock_guard lock(*g_segmentQueueMutex);
    ConsoleCount("QUEUEED3", entries.size());
    for (const auto& [index, segment] : entries) {
      pipeline.listedDuration += segment.duration;
      g_segmentQueue->push_back(segment);
    }
  }
  WakeHlsTasks();
}

void ClearSegmentQueue() {
  const std::lock_guard lock(*g_segmentQueueMutex);
  g_segmentQueue->clear();
  g_listedSegments = 0;
}

std::vector<M3u8Entry> TakeQueuedSegments(HlsPipeline& pipeline, SegmentHistory& history) {
  std::unique_lock lock(*g_segmentQueueMutex);
  g_segmentQueueCond->wait(
      lock, [&pipeline] { return !g_segmentQueue->empty() || !pipeline.running.load(); });
  if (std::exchange(history.epoch, g_sequenceEpoch) != g_sequenceEpoch) history.taken.Forget();
  const std::size_t limit = std::max(kRememberedSegments, g_listedSegments);
  std::vector<M3u8Entry> batch;
  for (M3u8Entry& segment : *g_segmentQueue) {
    if (!history.taken.Take(segment.uri, limit)) {
      NoteSegmentDone(segment.uri);
      continue;
    }
    pipeline.queuedDuration += segment.duration;
    batch.push_back(std::move(segment));
  }
  g_segmentQueue->clear();
  return batch;
}

void PauseBetweenRefreshes(const HlsPipeline& pipeline) {
  constexpr std::chrono::milliseconds kInterval{1000};
  std::unique_lock lock(*g_segmentQueueMutex);
  g_segmentQueueCond->wait_for(lock, kInterval, [&pipeline] { return !pipeline.running.load(); });
}
