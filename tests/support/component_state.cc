#include "tests/support/component_state.h"

#include <cstdint>
#include <filesystem>
#include <mutex>

#include "common/clock.h"
#include "common/frame_queue.h"
#include "common/once_per_start.h"
#include "common/temp_files.h"
#include "common/temp_folder.h"
#include "flv/flv_stream.h"
#include "hls/hls_stream.h"
#include "mp4/mp4_state.h"
#include "ts/ts_demux.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

void ResetTs() {
  g_tsRunning = false;
  {
    const TsDemuxLock lock;
    ProcessTsDemuxer().Reset();
  }
  {
    const std::lock_guard lock(g_tsStreamLock);
    g_tsStreamBuffer->Initialize();
    g_tsStreamBuffer->Reset();
    g_tsUrl->clear();
    g_tsTempPath->clear();
    g_tsPlayer = PlayerPort();
  }
  g_tsDownloaded = 0;
}

void ResetHls() {
  g_hlsStream->Clear();
  g_hlsStream->SetActive(nullptr);
  g_hlsStream->g_videoSkip = 0;
  g_hlsStream->g_audioSkip = 0;
}

void ResetFlv() {
  g_flvRunning = false;
  g_flvStream->MarkEndOfInput(g_flvStream->Begin());
  g_flvStream->Release();
}

// The counters are incremented, never reset, so that a pipeline that an earlier test leaked does
// not own the restart file of a later one.
void ResetMp4() {
  g_mp4Running = false;
  const std::lock_guard lock(g_mp4File->mutex);
  Mp4File& file = *g_mp4File;
  file.path.clear();
  file.ranges.Clear();
  file.write_offset = 0;
  file.failure_reported = false;
  ++file.revision;
  file.runs.Next();
}

void ResetCacheFiles() {
  ResetTempFolder();
  std::filesystem::remove_all(GetTempDirA());
}

}  // namespace

void ResetComponent() {
  UseClock(nullptr);
  ResetTs();
  ResetHls();
  ResetFlv();
  ResetMp4();
  ResetCacheFiles();
  ReleaseFrameQueues();
  CountStart();  // so that lines printed once a start are printed again
}

}  // namespace stream
