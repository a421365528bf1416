// Runs the tasks of an MP4 pipeline step by step, without the pipeline.
#ifndef TESTS_SUPPORT_MP4_TASKS_H_
#define TESTS_SUPPORT_MP4_TASKS_H_

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>

#include "common/frame_queue.h"
#include "mp4/mp4_state.h"
#include "mp4/mp4_track_reader.h"
#include "tests/golden/frame_dump.h"
#include "tests/support/local_file.h"
#include "tests/support/mp4_movies.h"
#include "tests/support/recording_player.h"

namespace stream {

class Mp4Tasks : public testing::Test {
 protected:
  Mp4Tasks() {
    ResetFrameQueues();
    g_mp4Running = true;
  }
  ~Mp4Tasks() override { g_mp4Running = false; }

  // --- The restart file ---

  // Starts another address: creates an empty restart file of that name, with no known ranges.
  // Returns its path.
  static std::string BeginAddress(const std::string& name) {
    std::string path = WriteLocalFile(name, {});
    UsePath(path);
    return path;
  }
  static void UsePath(const std::string& path) {
    const std::lock_guard lock(g_mp4File->mutex);
    g_mp4File->path = path;
    g_mp4File->ranges.Clear();
    g_mp4File->write_offset = 0;
    ++g_mp4File->revision;
    g_mp4File->runs.Next();
  }
  static RunId CurrentRun() {
    const std::lock_guard lock(g_mp4File->mutex);
    return g_mp4File->runs.Current();
  }

  // --- Reading a file ---

  // The whole file has been received.
  Mp4TrackReader::Source Whole(const std::string& path) { return Part(path, 999'999'999); }

  // Only the first `end` bytes have been received.
  Mp4TrackReader::Source Part(const std::string& path, std::uint64_t end) {
    return Between(path, {0, end});
  }
  Mp4TrackReader::Source Between(const std::string& path, ByteRange available) {
    return {RunId{}, "http://host/a.mp4", path, available, ++revision_, start_position_};
  }

  // Runs a pass and returns the frames it queued.
  FrameDump Pass(const Mp4TrackReader::Source& source) {
    EXPECT_TRUE(reader_.RunPass(source));
    return PopQueuedFrames();
  }
  // Reads a whole movie once.
  FrameDump PassOver(const mp4_test::Movie& movie) {
    return Pass(Whole(WriteLocalFile("movie.mp4", BuildMp4(movie).bytes)));
  }

  // Starts the same address again.
  void StartAgain() {
    reader_.Begin();
    ResetFrameQueues();
  }
  // Starts another address.
  void StartAnother() {
    reader_.Reset(RunId{});
    StartAgain();
  }

  RecordingPlayer player_;
  Mp4TrackReader reader_{PlayerPort(&player_)};
  std::atomic<float> start_position_{0};

 private:
  std::uint64_t revision_ = 0;
};

}  // namespace stream

#endif  // TESTS_SUPPORT_MP4_TASKS_H_
