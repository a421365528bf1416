// What the tasks of an FLV pipeline do, without the pipeline: for tests that run them step by step.
#ifndef TESTS_SUPPORT_FLV_TASKS_H_
#define TESTS_SUPPORT_FLV_TASKS_H_

#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <thread>

#include "common/frame_queue.h"
#include "flv/flv_download.h"
#include "flv/flv_play.h"
#include "flv/flv_stream.h"
#include "tests/golden/frame_dump.h"
#include "tests/support/flv_tags.h"
#include "tests/support/recording_player.h"

class FlvTasks : public testing::Test {
 protected:
  FlvTasks() {
    ResetFrameQueues();
    g_flvRunning = true;
  }
  ~FlvTasks() override { g_flvRunning = false; }

  // The transfer brings these bytes. Returns how many were taken.
  std::size_t Take(const flv_test::Bytes& bytes) {
    return transfer_.Take(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }

  // No more bytes will come.
  void EndOfDownload() const { g_flvStream->EndDownload(stream_); }

  // What a stop does first.
  static void BeginToStop() {
    g_flvRunning = false;
    g_flvStream->Stop();
  }

  // The play task's work, on this thread.
  void Play(const std::string& url, PlayerPort player) {
    PlayFlv({url, player, stream_, audio_config_});
  }
  void Play(const std::string& url) { Play(url, PlayerPort(&player_)); }

  // Both the download task's and the play task's work, to the end of both. Returns all the frames
  // that came of it; `console` gets what was printed.
  FrameDump DownloadAndPlay(const std::string& url, std::string* console = nullptr) {
    testing::internal::CaptureStdout();
    std::thread download([this, url] {
      DownloadFlv(url, stream_);
      EndOfDownload();
    });
    Play(url);
    download.join();
    const std::string text = testing::internal::GetCapturedStdout();
    if (console != nullptr) *console = text;
    return TakeQueuedFrames();
  }

  const std::uint64_t stream_ = g_flvStream->Begin();
  FlvTransfer transfer_{stream_};
  RecordingPlayer player_;
  std::atomic<std::uint16_t> audio_config_{0};
};

#endif  // TESTS_SUPPORT_FLV_TASKS_H_
