#include "mp4/mp4_downloader.h"

#include <memory>

#include "common/frame_queue.h"
#include "common/scope_exit.h"
#include "mp4/mp4_download.h"
#include "mp4/mp4_play.h"
#include "mp4/mp4_state.h"

using namespace stream;

CMp4Downloader::CMp4Downloader(CStreamPlayerImp* player)
    : player_(player),
      reader_(player_),
      pool_(CThreadPool::kPipelineWorkers),
      pipeline_({"mp4", "MP4"}, player_, g_mp4Running, pool_) {}

CMp4Downloader::~CMp4Downloader() { EndDownload(); }

bool CMp4Downloader::BeginDownload(const std::string& url) {
  pipeline_.Start();
  ResetFrameQueues();
  reader_.Begin();
  const RunId run = UseUrl(url);
  // One flag per start: the download of an earlier start must not end the reading of this one.
  const auto downloading = std::make_shared<std::atomic<bool>>(true);
  pipeline_.AddTask([url, run, downloading] { RunDownload(url, run, *downloading); });
  pipeline_.AddTask([=, this] {
    PlayMp4({url, run, player_, reader_, downloading, start_position_});
  });
  pipeline_.AddDeliveryTasks();
  return true;
}

bool CMp4Downloader::EndDownload() {
  start_position_ = 0;
  const bool was_running = pipeline_.Stop([] {});
  reader_.Close();  // also if another pipeline has cleared the flag
  return was_running;
}

bool CMp4Downloader::SetStartPostion(float seconds) {
  pipeline_.MoveStart(seconds, [this, seconds] {
    start_position_ = seconds;
    Seek(seconds);
  });
  return true;
}

// Returns whether the restart file still belongs to the address that this pipeline started last.
// The pipeline of another facade may have started an address since.
bool CMp4Downloader::OwnsFile() const {
  const MutexLock lock(g_mp4File->mutex);
  return g_mp4File->runs.IsCurrent(run_);
}

// If the file belongs to another pipeline now, neither the file nor that pipeline's next start is
// changed. The next start of this pipeline then begins from nothing.
void CMp4Downloader::Seek(float seconds) {
  if (!OwnsFile()) return;
  const std::uint64_t offset = reader_.Seek(seconds, Mp4MediaPath(url_));
  Mp4File& file = *g_mp4File;
  const MutexLock lock(file.mutex);
  if (!file.runs.IsCurrent(run_)) return;
  file.write_offset = file.ranges.EndOfRangeAt(offset);
  ++file.seeks;
}

// Another address starts from nothing, with an empty restart file. The same address keeps what was
// downloaded, unless another pipeline has used the file since. Returns the run of the file.
RunId CMp4Downloader::UseUrl(const std::string& url) {
  if (pipeline_.ReportIfSameAddress(url, url_) && OwnsFile()) return run_;
  url_ = url;
  run_ = BeginMp4Run("mebo.mp4");
  reader_.Reset(run_);
  return run_;
}

void CMp4Downloader::RunDownload(const std::string& url, RunId run,
                                 std::atomic<bool>& downloading) {
  const ScopeExit end([&downloading] { downloading = false; });
  DownloadMp4(url, run);
}
