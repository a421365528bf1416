// A facade, a recording player and a server, for tests that play HTTP Live Streaming.
#ifndef TESTS_SUPPORT_HLS_PLAY_H_
#define TESTS_SUPPORT_HLS_PLAY_H_

#include <chrono>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <vector>

#include "common/frame_queue.h"
#include "common/temp_files.h"
#include "hls/hls_stream.h"
#include "tests/support/hls_playlists.h"
#include "tests/support/hls_server.h"
#include "tests/support/play.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/wait_until.h"
#include "ts/ts_demux.h"

namespace stream {

// The file that stores segments without video. At the start of every test its directory exists and
// the file does not.
class BadSegmentFile {
 public:
  BadSegmentFile() : path_(GetTempDirA() + "tmpE.ts") {
    std::filesystem::create_directories(GetTempDirA());
    std::filesystem::remove(path_);
  }

  bool Exists() const { return std::filesystem::exists(path_); }
  std::string Contents() const {
    std::ostringstream contents;
    contents << std::ifstream(path_, std::ios::binary).rdbuf();
    return contents.str();
  }
  void Write(const std::string& text) const { std::ofstream(path_, std::ios::binary) << text; }

 private:
  std::string path_;
};

class HlsPlay : public Play<HlsServer> {
 protected:
  // Serves a stream as segments with these names, below "/".
  void PutSegments(const ts_test::Bytes& stream, const hls_test::Uris& names) {
    const auto segments = hls_test::CutIntoSegments(stream, names.size());
    for (std::size_t i = 0; i < names.size(); ++i) server_.Put("/" + names[i], segments[i]);
  }

  // Serves a stream as an on-demand playlist of `count` segments.
  void PutOnDemand(const ts_test::Bytes& stream, int count) {
    const auto names = hls_test::SegmentUris(0, count);
    PutSegments(stream, names);
    server_.Put(kList, hls_test::OnDemandPlaylist(names));
  }

  std::string ListUrl() const { return server_.Url(kList); }

  bool WaitForBufferedTimes(std::size_t count) {
    return player_.WaitFor(
        [count](const Record& record) { return record.buffered_times.size() >= count; });
  }

  // The number of requests for each of these names.
  std::vector<std::size_t> CountRequests(const hls_test::Uris& names) const {
    std::vector<std::size_t> counts;
    for (const std::string& name : names) counts.push_back(server_.CountRequests("/" + name));
    return counts;
  }

  static constexpr char kList[] = "/list.m3u8";

  BadSegmentFile bad_;
  HlsStream& stream_ = *g_hlsStream;
};

// HlsPlay in simulated time, for live streams: the pause before a refresh ends only when the test
// advances the clock, and no transfer times out for lack of data. Sleeps of a millisecond take real
// time, so the polling loops keep running.
class HlsLivePlay : public HlsPlay {
 protected:
  HlsLivePlay() { clock_.SetRealSleeps(std::chrono::milliseconds(1)); }
  ~HlsLivePlay() override { downloader_.EndDownload(); }  // no task may outlive the clock

  // Waits until the playlist task pauses and the segment task has finished all queued segments.
  // From then on nothing is requested until the next refresh.
  bool WaitForPause() {
    return WaitUntil([this] { return IsPausing(); });
  }

  // Ends a pause and waits for the next one: exactly one refresh and the segment downloads that
  // follow from it.
  bool NextRefresh() {
    if (!WaitForPause()) return false;
    clock_.Advance(kRefreshPause);
    return WaitForPause();
  }
  bool NextRefreshes(int count) {
    for (int i = 0; i < count; ++i) {
      if (!NextRefresh()) return false;
    }
    return true;
  }

  static constexpr std::chrono::seconds kRefreshPause{1};

  SimulatedClock clock_;

 private:
  // The segment task holds download_mutex while it downloads or hands over. If that mutex is free
  // and the task waits in the clock, it waits for segments, unless some are queued and it has not
  // woken up yet.
  bool IsPausing() const {
    constexpr std::size_t kTasks = 2;
    const std::unique_lock hand_over(stream_.download_mutex, std::try_to_lock);
    if (!hand_over.owns_lock()) return false;
    const std::lock_guard lock(stream_.g_segmentQueueMutex);
    return stream_.g_segmentQueue.empty() && clock_.Waiting() == kTasks;
  }
};

// The frames that the demultiplexer outputs for a whole stream.
inline RecordingPlayer::Record FramesOf(const ts_test::Bytes& stream) {
  RecordingPlayer::Record record;
  const TsDemuxLock lock;
  ProcessTsDemuxer().Reset();
  ResetFrameQueues();
  ts_demux_feed(stream.data(), static_cast<std::int32_t>(stream.size()));
  const auto pop_all = [](FrameNodePtr (*pop)(), std::vector<RecordedFrame>& frames) {
    while (const FrameNodePtr node = pop()) {
      frames.push_back(
          {node->pts, node->dts, node->playTime, {node->data, node->data + node->size}});
    }
  };
  pop_all(PopVideoFrame, record.video);
  pop_all(PopAudioFrame, record.audio);
  ProcessTsDemuxer().Reset();
  return record;
}

}  // namespace stream

#endif  // TESTS_SUPPORT_HLS_PLAY_H_
