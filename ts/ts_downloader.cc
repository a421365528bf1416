#include "ts/ts_downloader.h"

#include <ctime>
#include <mutex>

#include "common/console.h"
#include "common/frame_delivery.h"
#include "common/frame_queue.h"
#include "common/scope_exit.h"
#include "common/start_position.h"
#include "common/stop_protocol.h"
#include "common/temp_files.h"
#include "ts/ts_download.h"
#include "ts/ts_parse.h"
#include "ts/ts_state.h"

namespace {

void ResetStreamBuffer() {
  const std::lock_guard lock(g_tsStreamLock);
  g_tsStreamBuffer->Initialize();
  g_tsStreamBuffer->Reset();
}

void RecordPlayer(const PlayerPort& player) {
  const std::lock_guard lock(g_tsStreamLock);
  g_tsPlayer = player;
}

}  // namespace

CTsDownloader::CTsDownloader(CStreamPlayerImp* player)
    : CThreadPool(kPipelineWorkers), player_(player) {
  ResetStreamBuffer();
}

CTsDownloader::~CTsDownloader() {
  EndDownload();
  Stop();  // no task may outlive the members
}

bool CTsDownloader::BeginDownload(const std::string& url) {
  downloading = true;
  g_tsRunning = true;
  Start();
  ResetFrameQueues();
  ResetStreamBuffer();
  RecordPlayer(player_);
  UseUrl(url);
  AddGated([this, url] { RunDownload(url); });
  AddGated([this] { ParseTs(player_); });
  const auto wanted = [this](const FrameRecord& frame) { return IsWanted(frame); };
  AddGated([=, this] {
    DeliverVideoFrames({g_tsRunning, player_, wanted, "ts video thread stop."});
  });
  AddGated([=, this] {
    DeliverAudioFrames({g_tsRunning, player_, wanted, "ts audio thread stop."});
  });
  return true;
}

bool CTsDownloader::EndDownload() {
  startSeconds = 0;
  return StopPipeline({"ts", g_tsRunning, *this, gate_, [this] { downloading = false; }});
}

bool CTsDownloader::SetStartPostion(float seconds) {
  startSeconds = seconds;
  // Kept for compatibility: the reported time is that of this one assignment.
  const std::clock_t before = std::clock();
  g_tsDownloaded = 0;
  const std::clock_t elapsed = std::clock() - before;
  player_.Message(StartPositionLine("TS", seconds, elapsed));
  return true;
}

// A different address starts at 0, with an empty cache file. The same address keeps its download
// offset.
void CTsDownloader::UseUrl(const std::string& url) {
  if (url == TsUrl()) {
    player_.Message("PLAY TS RE:" + url);
    return;
  }
  {
    const std::lock_guard lock(g_tsStreamLock);
    *g_tsUrl = url;
    g_tsDownloaded = 0;
  }
  const std::string path = CreateCacheFile("mebo.ts");  // nothing is written to it
  const std::lock_guard lock(g_tsStreamLock);
  *g_tsTempPath = path;
}

bool CTsDownloader::IsWanted(const FrameRecord& frame) const {
  return !IsBeforeStart(startSeconds.load(), frame.playTime);
}

void CTsDownloader::RunDownload(const std::string& url) {
  const ScopeExit end([this] { downloading = false; });
  DownloadTs(url, player_);
  ConsoleLine("ts Download thread stop.");
}
