#include "flv/flv_downloader.h"

#include "common/console.h"
#include "common/frame_queue.h"
#include "common/scope_exit.h"
#include "common/temp_files.h"
#include "flv/flv_download.h"
#include "flv/flv_play.h"
#include "flv/flv_stream.h"

using namespace stream;

CFlvDownloader::CFlvDownloader(CStreamPlayerImp* player)
    : player_(player),
      pool_(CThreadPool::kPipelineWorkers),
      pipeline_({"flv", "FLV"}, player_, g_flvRunning, pool_) {}

CFlvDownloader::~CFlvDownloader() { EndDownload(); }

bool CFlvDownloader::BeginDownload(const std::string& url) {
  pipeline_.Start();
  const RunId run = g_flvStream->Begin();  // from here on, an older run queues nothing
  ResetFrameQueues();
  UseUrl(url);
  pipeline_.AddTask([url, run] { RunDownload(url, run); });
  pipeline_.AddTask([this, url, run] { PlayFlv({url, player_, run, audio_config_}); });
  pipeline_.AddDeliveryTasks();
  return true;
}

bool CFlvDownloader::EndDownload() {
  if (!pipeline_.Stop([] { g_flvStream->Wake(); })) return false;
  g_flvStream->Release();
  return true;
}

bool CFlvDownloader::SetStartPostion(float seconds) {
  // Reports the time of doing nothing, since the position is ignored. Kept for compatibility.
  pipeline_.MoveStart(seconds, [] {});
  return true;
}

// A new address gets an empty cache file. Nothing is ever written to it.
void CFlvDownloader::UseUrl(const std::string& url) {
  if (pipeline_.ReportIfSameAddress(url, url_)) return;
  url_ = url;
  CreateCacheFile("mebo.flv");
}

void CFlvDownloader::RunDownload(const std::string& url, RunId run) {
  const ScopeExit end([run] { g_flvStream->MarkEndOfInput(run); });
  DownloadFlv(url, run);
  ConsoleLine("flv Download thread stop.");
}
