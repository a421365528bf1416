#include "flv/flv_play.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <memory>
#include <mutex>

#include "common/address.h"
#include "common/console.h"
#include "common/platform.h"
#include "flv/flv_download_source.h"
#include "flv/flv_state.h"
#include "flv/flv_tag_parser.h"

namespace {

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

void AwaitData(const std::atomic<bool>& downloading) {
  std::unique_lock lock(g_flvStreamLock);
  g_flvDataReady->wait(lock, [&downloading] {
    return g_flvStreamBuffer->Size() > kFlvReadySize || !downloading.load() || !g_flvRunning.load();
  });
}

// A local file is read here too, up to 10 MiB of it, beside the download: kept on purpose. Nothing
// is said where it cannot be opened.
void PreloadLocalFile(const std::string& path) {
  constexpr std::size_t kPieceSize = 10240;
  constexpr std::uint32_t kPreloadLimit = 0xA00000;
  const std::unique_ptr<std::FILE, FileCloser> file(platform::OpenFile(path, "rb+"));
  if (file == nullptr) return;
  std::array<char, kPieceSize> piece;
  std::uint64_t offset = 0;
  while (g_flvRunning.load() && StagedFlvBytes() < kPreloadLimit) {
    const std::size_t length = std::fread(piece.data(), 1, piece.size(), file.get());
    if (length == 0) return;
    if (!StageFlvBytes(offset, piece.data(), static_cast<std::uint32_t>(length))) return;
    offset += length;
  }
}

void Report(const FlvPlay& play, bool has_header) {
  const char* const outcome = has_header ? "FLV CACHE_NO OK:" : "FLV NO:";
  play.player.Message(std::string("PLAY ") + outcome + play.url);
  play.player.PlayResult(std::string("PLAY:") + outcome + play.url);
}

void ReadTags(FlvTagParser& parser) {
  while (g_flvRunning.load() && parser.ReadTag()) platform::SleepMilliseconds(1);
  ConsoleLine("read over");
}

}  // namespace

void PlayFlv(const FlvPlay& play) {
  AwaitData(play.downloading);
  if (IsFileUrl(play.url)) PreloadLocalFile(FileUrlPath(play.url));
  FlvDownloadSource source(play.downloading);
  FlvTagParser parser(source, play.audio_config);
  const bool has_header = parser.ReadHeader();
  Report(play, has_header);
  if (has_header) {
    ReadTags(parser);
  } else {
    ConsoleLine("ReadHead Err");
  }
}
