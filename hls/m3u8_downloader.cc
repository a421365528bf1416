#include "hls/m3u8_downloader.h"

#include "common/clock.h"
#include "common/console.h"
#include "common/format_text.h"
#include "common/frame_queue.h"
#include "hls/hls_delivery.h"
#include "hls/playlist_thread.h"
#include "hls/segment_download.h"
#include "hls/segment_parse.h"
#include "platform/local_time.h"

using namespace stream;

namespace stream {

std::string DateText(const std::tm& local) {
  return FormatText(
      "%d\xC4\xEA"
      "%d\xD4\xC2"
      "%d\xC8\xD5 %d:%d:%d",
      local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour, local.tm_min,
      local.tm_sec);
}

}  // namespace stream

CM3u8Downloader::CM3u8Downloader(CStreamPlayerImp* player)
    : hls_{.player = PlayerPort(player),
           .variantHandle = MakeCurlHandle(),
           .playlistHandle = MakeCurlHandle(),
           .segmentHandle = MakeCurlHandle()},
      start_time_(CurrentClock().WallTime()),
      pool_(CThreadPool::kPipelineWorkers),
      pipeline_({"m3u8", "M3U8", true}, hls_.player, hls_.running, pool_) {
  hls_.stream.SetActive(&hls_);
}

CM3u8Downloader::~CM3u8Downloader() {
  EndDownload();
  hls_.stream.ForgetActive(&hls_);
}

bool CM3u8Downloader::BeginDownload(const std::string& url) {
  hls_.stream.SetActive(&hls_);
  hls_.position = 0;
  hls_.queuedDuration = 0;
  pipeline_.Start();
  StartDownload(url);
  ResetFrameQueues();
  pipeline_.AddTask([this, url] { ParseSegmentsThread(hls_, url); });
  pipeline_.AddDeliveryTasks(HlsFrameFilters(hls_));
  return true;
}

void CM3u8Downloader::StartDownload(const std::string& url) {
  start_time_ = CurrentClock().WallTime();
  ConsoleLine("StartDownload: " + DateText(platform::LocalTime(start_time_)));
  if (hls_.playlistHandle == nullptr) return;
  pipeline_.AddTask([this, url] { PlaylistThread(hls_, url); });
  if (hls_.segmentHandle == nullptr) return;
  pipeline_.AddTask([this] { DownloadPartsThread(hls_); });
}

bool CM3u8Downloader::EndDownload() {
  hls_.startPosition = 0;
  if (!hls_.running.load()) return false;
  const auto wake = [this] {
    hls_.stream.WakeTasks();
    hls_.player.Message("PLAY STOP...");
  };
  pipeline_.Stop(wake);
  // Both must follow Stop; a task of this run would use up the skip.
  hls_.stream.SkipFirstVideoFrame();
  hls_.stream.Clear();
  ReleaseFrameQueues();
  const std::time_t now = CurrentClock().WallTime();
  ConsoleLine("StopDownload: " + DateText(platform::LocalTime(now)) +
              " Running: " + std::to_string(now - start_time_) + kSecondsGb2312);
  hls_.player.Message("PLAY STOP OK");
  return true;
}

bool CM3u8Downloader::SetStartPostion(float seconds) {
  hls_.startPosition = seconds;
  pipeline_.ReportStart(seconds);
  return true;
}
