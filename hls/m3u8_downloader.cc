#include "hls/m3u8_downloader.h"

#include "common/clock.h"
#include "common/console.h"
#include "common/format_text.h"
#include "common/frame_queue.h"
#include "common/platform.h"
#include "common/start_position.h"
#include "common/stop_protocol.h"
#include "hls/hls_delivery.h"
#include "hls/playlist_thread.h"
#include "hls/segment_download.h"
#include "hls/segment_parse.h"

std::string DateText(const std::tm& local) {
  return FormatText(
      "%d\xC4\xEA"
      "%d\xD4\xC2"
      "%d\xC8\xD5 %d:%d:%d",
      local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
      local.tm_sec);
}

CM3u8Downloader::CM3u8Downloader(CStreamPlayerImp* player)
    : start_time_(CurrentClock().WallTime()), pool_(CThreadPool::kPipelineWorkers) {
  pipeline_.player = PlayerPort(player);
  pipeline_.variantHandle = MakeCurlHandle();
  pipeline_.playlistHandle = MakeCurlHandle();
  pipeline_.segmentHandle = MakeCurlHandle();
  pipeline_.stream.SetActive(&pipeline_);
}

CM3u8Downloader::~CM3u8Downloader() {
  EndDownload();
  pool_.Stop();  // no task may outlive the members
  pipeline_.stream.ForgetActive(&pipeline_);
}

bool CM3u8Downloader::BeginDownload(const std::string& url) {
  pipeline_.stream.SetActive(&pipeline_);
  pipeline_.running = true;
  pipeline_.position = 0;
  pipeline_.queuedDuration = 0;
  pool_.Start();
  StartDownload(url);
  ResetFrameQueues();
  AddGated([this, url] { ParseSegmentsThread(pipeline_, url); });
  AddGated([this] { DeliverHlsVideo(pipeline_); });
  AddGated([this] { DeliverHlsAudio(pipeline_); });
  return true;
}

void CM3u8Downloader::StartDownload(const std::string& url) {
  start_time_ = CurrentClock().WallTime();
  ConsoleLine("StartDownload: " + DateText(platform::LocalTime(start_time_)));
  if (pipeline_.playlistHandle == nullptr) return;
  AddGated([this, url] { PlaylistThread(pipeline_, url); });
  if (pipeline_.segmentHandle == nullptr) return;
  AddGated([this] { DownloadPartsThread(pipeline_); });
}

bool CM3u8Downloader::EndDownload() {
  pipeline_.startPosition = 0;
  if (!pipeline_.running.load()) return false;
  const auto wake = [this] {
    pipeline_.stream.WakeTasks();
    pipeline_.player.Message("PLAY STOP...");
  };
  StopPipeline({"m3u8", pipeline_.running, pool_, gate_, wake});
  // Both must follow StopPipeline; a task of this run would use up the skip.
  pipeline_.stream.SkipFirstVideoFrame();
  pipeline_.stream.Clear();
  ReleaseFrameQueues();
  const std::time_t now = CurrentClock().WallTime();
  ConsoleLine("StopDownload: " + DateText(platform::LocalTime(now)) +
              " Running: " + std::to_string(now - start_time_) + kSecondsGb2312);
  pipeline_.player.Message("PLAY STOP OK");
  return true;
}

bool CM3u8Downloader::SetStartPostion(float seconds) {
  pipeline_.startPosition = seconds;
  pipeline_.player.Message(StartPositionLine("M3U8", seconds));
  return true;
}
