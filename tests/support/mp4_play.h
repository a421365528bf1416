// A facade, a recording player and a server, for tests that play MP4.
#ifndef TESTS_SUPPORT_MP4_PLAY_H_
#define TESTS_SUPPORT_MP4_PLAY_H_

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <mutex>
#include <string>
#include <vector>

#include "common/frame_queue.h"
#include "common/temp_files.h"
#include "mp4/mp4_state.h"
#include "tests/golden/frame_dump.h"
#include "tests/support/mp4_movies.h"
#include "tests/support/mp4_server.h"
#include "tests/support/play.h"
#include "tests/support/wait_until.h"

namespace stream {

// The received frames in the form of the reader's frames.
inline FrameDump DumpOf(const RecordingPlayer::Record& record) {
  const auto copy = [](const std::vector<RecordedFrame>& frames, bool is_video) {
    std::vector<DumpedFrame> copies;
    copies.reserve(frames.size());
    for (const RecordedFrame& frame : frames) {
      copies.push_back({frame.pts, frame.dts, frame.play_time, is_video, true, frame.payload});
    }
    return copies;
  };
  return {copy(record.video, true), copy(record.audio, false)};
}

class Mp4PlayFixture : public Play<Mp4Server> {
 protected:
  static std::string RestartFile() { return GetTempDirA() + "mebo.mp4"; }
  static mp4_test::Bytes RestartBytes() {
    std::ifstream file(RestartFile(), std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
  }

  // Serves a movie. Afterwards file_ describes its file.
  void ServeMovie(const mp4_test::Movie& movie) {
    movie_ = movie;
    file_ = mp4_test::BuildMp4(movie);
    server_.Serve(file_.bytes);
  }

  // The file offset of the first of the samples with this number.
  std::size_t Begin(std::size_t number) const {
    std::uint64_t begin = UINT64_MAX;
    for (const auto& of_track : file_.offsets) begin = std::min(begin, of_track.at(number));
    return static_cast<std::size_t>(begin);
  }

  bool WaitForOutcome() {
    return player_.WaitFor([](const Record& record) { return !record.results.empty(); });
  }

  // Waits until the player has received all queued frames.
  bool WaitForDelivery() {
    return WaitUntil([this] {
      std::unique_lock lock(g_frameQueueMutex);
      if (g_videoQueue->count != 0 || g_audioQueue->count != 0) return false;
      const std::uint64_t video = g_videoQueue->pushed;
      const std::uint64_t audio = g_audioQueue->pushed;
      lock.unlock();
      const Record record = player_.Snapshot();
      return record.video.size() >= video && record.audio.size() >= audio;
    });
  }

  // Waits until the restart file contains its first `count` bytes.
  static bool WaitForBytes(std::uint64_t count) {
    return WaitUntil([count] {
      const std::lock_guard lock(g_mp4File->mutex);
      return g_mp4File->ranges.First().Contains(0, count);
    });
  }

  // Plays until the outcome is reported, stops when all queued frames have been delivered, and
  // returns the dump of the frames.
  std::string PlayToTheEnd(const std::string& url) {
    downloader_.BeginDownload(url);
    EXPECT_TRUE(WaitForOutcome());
    EXPECT_TRUE(WaitForDelivery());
    EXPECT_TRUE(Stop());
    return DumpText(DumpOf(player_.Snapshot()));
  }
  std::string PlayToTheEnd() { return PlayToTheEnd(server_.Address()); }

  std::string Expected(const mp4_test::From& from = {}) const {
    return DumpText(mp4_test::ExpectedFrames(movie_, from));
  }

  // Call it after a stop, so that only the next start is recorded.
  void StartAgain() {
    player_.Reopen();
    player_.Forget();
  }

  mp4_test::Movie movie_;
  mp4_boxes::File file_;
};

}  // namespace stream

#endif  // TESTS_SUPPORT_MP4_PLAY_H_
