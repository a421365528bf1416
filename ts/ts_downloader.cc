#include "ts/ts_downloader.h"

#include "common/console.h"
#include "common/frame_queue.h"
#include "common/scope_exit.h"
#include "common/start_position.h"
#include "common/temp_files.h"
#include "ts/ts_download.h"
#include "ts/ts_parse.h"
#include "ts/ts_state.h"

using namespace stream;

namespace {

void ResetStreamBuffer() {
  const MutexLock lock(g_tsStreamLock);
  g_tsStreamBuffer->Initialize();
  g_tsStreamBuffer->Reset();
}

void RecordPlayer(const PlayerPort& player) {
  const MutexLock lock(g_tsStreamLock);
  g_tsPlayer = player;
}

}  // namespace

CTsDownloader::CTsDownloader(CStreamPlayerImp* player)
    : CThreadPool(kPipelineWorkers),
      player_(player),
      pipeline_({"ts", "TS"}, player_, g_tsRunning, *this) {
  ResetStreamBuffer();
}

CTsDownloader::~CTsDownloader() { EndDownload(); }

bool CTsDownloader::BeginDownload(const std::string& url) {
  downloading = true;
  pipeline_.Start();
  ResetFrameQueues();
  ResetStreamBuffer();
  RecordPlayer(player_);
  UseUrl(url);
  pipeline_.AddTask([this, url] { RunDownload(url); });
  pipeline_.AddTask([this] { ParseTs(player_); });
  const auto wanted = [this](const FrameRecord& frame) { return IsWanted(frame); };
  pipeline_.AddDeliveryTasks({wanted, wanted});
  return true;
}

bool CTsDownloader::EndDownload() {
  startSeconds = 0;
  return pipeline_.Stop([this] { downloading = false; });
}

bool CTsDownloader::SetStartPostion(float seconds) {
  startSeconds = seconds;
  // Kept for compatibility: the reported time is that of this one assignment.
  pipeline_.MoveStart(seconds, [] { g_tsDownloaded = 0; });
  return true;
}

// A different address starts at 0, with an empty cache file. The same address keeps its download
// offset.
void CTsDownloader::UseUrl(const std::string& url) {
  if (pipeline_.ReportIfSameAddress(url, TsUrl())) return;
  {
    const MutexLock lock(g_tsStreamLock);
    *g_tsUrl = url;
    g_tsDownloaded = 0;
  }
  const std::string path = CreateCacheFile("mebo.ts");  // nothing is written to it
  const MutexLock lock(g_tsStreamLock);
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
