#include "flv/flv_downloader.h"

#include <ctime>

#include "common/console.h"
#include "common/frame_delivery.h"
#include "common/frame_queue.h"
#include "common/scope_exit.h"
#include "common/start_position.h"
#include "common/stop_protocol.h"
#include "common/temp_files.h"
#include "flv/flv_download.h"
#include "flv/flv_play.h"
#include "flv/flv_stream.h"

CFlvDownloader::CFlvDownloader(CStreamPlayerImp* player)
    : player_(player), pool_(CThreadPool::kPipelineWorkers) {}

CFlvDownloader::~CFlvDownloader() {
  EndDownload();
  pool_.Stop();  // no task may outlive the members
}

bool CFlvDownloader::BeginDownload(const std::string& url) {
  g_flvRunning = true;
  pool_.Start();
  // From here on, an older stream queues nothing.
  const std::uint64_t stream = g_flvStream->Begin();
  ResetFrameQueues();
  UseUrl(url);
  AddGated([url, stream] { RunDownload(url, stream); });
  AddGated([this, url, stream] { PlayFlv({url, player_, stream, audio_config_}); });
  AddGated([this] { DeliverVideoFrames({g_flvRunning, player_, {}, "flv video thread stop."}); });
  AddGated([this] { DeliverAudioFrames({g_flvRunning, player_, {}, "flv audio thread stop."}); });
  return true;
}

bool CFlvDownloader::EndDownload() {
  if (!StopPipeline({"flv", g_flvRunning, pool_, gate_, [] { g_flvStream->Stop(); }})) return false;
  g_flvStream->Release();
  return true;
}

bool CFlvDownloader::SetStartPostion(float seconds) {
  // Reports the time of doing nothing, since the position is ignored. Kept for compatibility.
  const std::clock_t before = std::clock();
  const std::clock_t elapsed = std::clock() - before;
  player_.Message(StartPositionLine("FLV", seconds, elapsed));
  return true;
}

// A new address gets an empty cache file. Nothing is ever written to it.
void CFlvDownloader::UseUrl(const std::string& url) {
  if (url == url_) {
    player_.Message("PLAY FLV RE:" + url);
    return;
  }
  url_ = url;
  CreateCacheFile("mebo.flv");
}

void CFlvDownloader::RunDownload(const std::string& url, std::uint64_t stream) {
  const ScopeExit end([stream] { g_flvStream->EndDownload(stream); });
  DownloadFlv(url, stream);
  ConsoleLine("flv Download thread stop.");
}
