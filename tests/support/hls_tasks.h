// The state shared by the tasks of an HLS pipeline, without the tasks: tests run the steps of the
// tasks themselves, without the pauses.
#ifndef TESTS_SUPPORT_HLS_TASKS_H_
#define TESTS_SUPPORT_HLS_TASKS_H_

#include <gtest/gtest.h>

#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "hls/hls_stream.h"
#include "hls/hls_task_state.h"
#include "hls/playlist_fetch.h"
#include "hls/playlist_ingest.h"
#include "hls/segment_download.h"
#include "tests/support/recording_player.h"

namespace stream {

class HlsTasks : public testing::Test {
 protected:
  HlsTasks() {
    hls_.player = PlayerPort(&player_);
    hls_.variantHandle = MakeCurlHandle();
    hls_.playlistHandle = MakeCurlHandle();
    hls_.segmentHandle = MakeCurlHandle();
    hls_.running = true;
    stream_.SetActive(&hls_);
  }
  ~HlsTasks() override {
    hls_.running = false;
    stream_.ForgetActive(&hls_);
    stream_.Clear();
  }

  // One pass of the playlist thread over a playlist whose text is `text`. Returns the console
  // output.
  std::string Queue(const std::string& text) {
    testing::internal::CaptureStdout();
    QueueOrPutBack(kUrl, PlaylistText(std::string()) + text);
    return testing::internal::GetCapturedStdout();
  }

  // One request for the playlist and, if it succeeds, one pass. The console output is dropped.
  bool Refresh(const std::string& url) {
    testing::internal::CaptureStdout();
    const auto text = FetchPlaylist(hls_, {url, true});
    if (text) QueueOrPutBack(url, *text);
    testing::internal::GetCapturedStdout();
    return text.has_value();
  }

  // The segments that the segment thread would download now, each as the last part of its address.
  std::vector<std::string> PopSegments() {
    if (WaitingSegments() == 0) return {};
    std::vector<std::string> names;
    for (const QueuedSegment& segment : PopQueuedSegments(hls_, history_)) {
      const std::string& uri = segment.entry.uri;
      names.push_back(uri.substr(uri.rfind('/') + 1));
      popped_.push_back(segment.entry);
    }
    return names;
  }

  // PopSegments, then every download succeeds.
  std::vector<std::string> PopAndDownload() {
    const std::size_t before = popped_.size();
    auto names = PopSegments();
    for (std::size_t i = before; i < popped_.size(); ++i) {
      stream_.ledger.SetSegmentState(popped_[i].uri, kSegmentDownloaded);
    }
    return names;
  }

  std::size_t WaitingSegments() {
    const std::lock_guard lock(stream_.g_segmentQueueMutex);
    return stream_.g_segmentQueue.size();
  }

  std::string PlaylistText() {
    const std::lock_guard lock(stream_.playlist_mutex);
    return stream_.g_playlistText;
  }
  // Sets the text and returns the previous one.
  std::string PlaylistText(std::string text) {
    const std::lock_guard lock(stream_.playlist_mutex);
    return std::exchange(stream_.g_playlistText, std::move(text));
  }
  std::string VariantText() {
    const std::lock_guard lock(stream_.playlist_mutex);
    return stream_.g_variantText;
  }

  static constexpr char kList[] = "/list.m3u8";  // a path on a server
  static constexpr char kUrl[] = "http://host/live/list.m3u8";

  void QueueOrPutBack(const std::string& url, const std::string& text) {
    if (!QueueSegmentsFromPlaylist(hls_, url, text)) PutBackPlaylistBody(stream_, text);
  }

  RecordingPlayer player_;
  HlsTaskState hls_;
  HlsStream& stream_ = hls_.stream;
  SegmentHistory history_;
  std::vector<M3u8Entry> popped_;  // all segments returned by PopSegments so far
};

}  // namespace stream

#endif  // TESTS_SUPPORT_HLS_TASKS_H_
