// Runs the tasks of an FLV pipeline step by step, without the pipeline.
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

namespace stream {

class FlvTasks : public testing::Test {
 protected:
  FlvTasks() {
    ResetFrameQueues();
    g_flvRunning = true;
  }
  ~FlvTasks() override { g_flvRunning = false; }

  // The transfer receives these bytes. Returns how many of them it accepted.
  std::size_t Receive(const flv_test::Bytes& bytes) {
    return transfer_.OnBytes(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  }

  // Marks the end of the input.
  void EndOfDownload() const { g_flvStream->MarkEndOfInput(run_); }

  // The first step of a stop.
  static void BeginToStop() {
    g_flvRunning = false;
    g_flvStream->Wake();
  }

  // Runs the play task on this thread.
  void Play(const std::string& url, PlayerPort player) {
    PlayFlv({url, player, run_, audio_config_});
  }
  void Play(const std::string& url) { Play(url, PlayerPort(&player_)); }

  // Runs the download task and the play task to their ends. Returns all queued frames; `console`
  // receives the console output.
  FrameDump DownloadAndPlay(const std::string& url, std::string* console = nullptr) {
    testing::internal::CaptureStdout();
    std::thread download([this, url] {
      DownloadFlv(url, run_);
      EndOfDownload();
    });
    Play(url);
    download.join();
    const std::string text = testing::internal::GetCapturedStdout();
    if (console != nullptr) *console = text;
    return PopQueuedFrames();
  }

  const RunId run_ = g_flvStream->Begin();
  FlvTransfer transfer_{run_};
  RecordingPlayer player_;
  std::atomic<std::uint16_t> audio_config_{0};
};

}  // namespace stream

#endif  // TESTS_SUPPORT_FLV_TASKS_H_
