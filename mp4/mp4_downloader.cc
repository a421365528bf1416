#include "mp4/mp4_downloader.h"

#include <ctime>
#include <memory>
#include <mutex>

#include "common/frame_delivery.h"
#include "common/frame_queue.h"
#include "common/scope_exit.h"
#include "common/start_position.h"
#include "common/stop_protocol.h"
#include "mp4/mp4_download.h"
#include "mp4/mp4_play.h"
#include "mp4/mp4_state.h"

CMp4Downloader::CMp4Downloader(CStreamPlayerImp* player)
    : player_(player), reader_(player_), pool_(CThreadPool::kPipelineWorkers) {}

CMp4Downloader::~CMp4Downloader() {
  EndDownload();
  pool_.Stop();  // no task may outlive the members
}

bool CMp4Downloader::BeginDownload(const std::string& url) {
  g_mp4Running = true;
  pool_.Start();
  ResetFrameQueues();
  reader_.Begin();
  const std::uint64_t address = UseUrl(url);
  // One flag per start: the download of an earlier start must not end the reading of this one.
  const auto downloading = std::make_shared<std::atomic<bool>>(true);
  AddGated([url, address, downloading] { RunDownload(url, address, *downloading); });
  AddGated([=, this] { PlayMp4({url, address, player_, reader_, downloading, start_position_}); });
  AddGated([this] { DeliverVideoFrames({g_mp4Running, player_, {}, "mp4 video thread stop."}); });
  AddGated([this] { DeliverAudioFrames({g_mp4Running, player_, {}, "mp4 audio thread stop."}); });
  return true;
}

bool CMp4Downloader::EndDownload() {
  start_position_ = 0;
  const bool was_running = StopPipeline({"mp4", g_mp4Running, pool_, gate_, [] {}});
  reader_.Close();  // also if another pipeline has cleared the flag
  return was_running;
}

bool CMp4Downloader::SetStartPostion(float seconds) {
  const std::clock_t before = std::clock();
  start_position_ = seconds;
  Seek(seconds);
  const std::clock_t elapsed = std::clock() - before;
  player_.Message(StartPositionLine("MP4", seconds, elapsed));
  return true;
}

// Returns whether the process-wide state still belongs to the address that this pipeline started
// last. The pipeline of another facade may have started an address since.
bool CMp4Downloader::OwnsFile() const {
  const std::lock_guard lock(g_mp4FileLock);
  return address_ == g_mp4File->addresses;
}

// If the file belongs to another pipeline now, neither the file nor that pipeline's next start is
// changed. The next start of this pipeline then begins from nothing.
void CMp4Downloader::Seek(float seconds) {
  if (!OwnsFile()) return;
  const std::uint64_t offset = reader_.Seek(seconds, Mp4MediaPath(url_));
  const std::lock_guard lock(g_mp4FileLock);
  Mp4File& file = *g_mp4File;
  if (address_ != file.addresses) return;
  file.write_offset = file.ranges.EndOfRangeAt(offset);
  ++file.seeks;
}

// Another address starts from nothing, with an empty restart file. The same address keeps what was
// downloaded, unless another pipeline has used the file since. Returns the number of the address.
std::uint64_t CMp4Downloader::UseUrl(const std::string& url) {
  if (url == url_) {
    player_.Message("PLAY MP4 RE:" + url);
    if (OwnsFile()) return address_;
  }
  url_ = url;
  address_ = NextMp4Address("mebo.mp4");
  reader_.Reset(address_);
  return address_;
}

void CMp4Downloader::RunDownload(const std::string& url, std::uint64_t address,
                                 std::atomic<bool>& downloading) {
  const ScopeExit end([&downloading] { downloading = false; });
  DownloadMp4(url, address);
}
