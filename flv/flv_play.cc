#include "flv/flv_play.h"

#include <array>
#include <cstddef>
#include <cstdio>

#include "common/address.h"
#include "common/clock.h"
#include "common/console.h"
#include "common/pipeline.h"
#include "common/queue_limit.h"
#include "common/scope_exit.h"
#include "flv/flv_stream.h"
#include "flv/flv_tag_parser.h"
#include "platform/files.h"

namespace stream {
namespace {

// Reads a local file a second time, in parallel with the download, until 10 MiB are unread.
// Kept for compatibility. Logs nothing if the file cannot be opened.
void PreloadLocalFile(const std::string& path, RunId run) {
  constexpr std::size_t kPieceSize = 10240;
  constexpr std::uint32_t kPreloadLimit = 0xA00000;
  if (platform::IsSpecialFile(path)) return;
  const platform::File file = platform::OpenFile(path, "rb+");
  if (file == nullptr) return;
  std::array<char, kPieceSize> piece;
  std::uint64_t offset = 0;
  while (g_flvRunning.load() && g_flvStream->UnreadSize() < kPreloadLimit) {
    const std::size_t length = std::fread(piece.data(), 1, piece.size(), file.get());
    if (length == 0 ||
        !g_flvStream->Stage(run, offset, piece.data(), static_cast<std::uint32_t>(length))) {
      return;
    }
    offset += length;
  }
}

void Report(const FlvPlay& play, bool has_header) {
  ReportOutcome(play.player, has_header ? "FLV CACHE_NO OK" : "FLV NO", play.url);
}

void ReadTags(FlvTagParser& parser) {
  while (g_flvRunning.load() && parser.ReadTag()) {
    WaitForQueueSpace(g_flvRunning, kDefaultQueueLimit);
    SleepFor(std::chrono::milliseconds(1));
  }
  ConsoleLine("read over");
}

}  // namespace

void PlayFlv(const FlvPlay& play) {
  const ScopeExit end([&play] { g_flvStream->EndParsing(play.run); });
  g_flvStream->WaitUntilReady(play.run);
  if (IsFileUrl(play.url)) PreloadLocalFile(FileUrlPath(play.url), play.run);
  FlvStreamSource source(play.run);
  FlvTagParser parser(source, play.audio_config);
  const bool has_header = parser.ReadHeader();
  Report(play, has_header);
  if (has_header) {
    ReadTags(parser);
  } else {
    ConsoleLine("ReadHead Err");
  }
}

}  // namespace stream
