#include "stream_downloader.h"

#include <array>
#include <cstring>
#include <memory>
#include <new>
#include <type_traits>

#include "common/address.h"
#include "common/http_transfer.h"
#include "common/once_per_start.h"
#include "common/player_lines.h"
#include "common/player_port.h"
#include "flv/flv_downloader.h"
#include "hls/m3u8_downloader.h"
#include "mp4/mp4_downloader.h"
#include "ts/ts_downloader.h"

using namespace stream;

static_assert(sizeof(CStreamDownloader) == 6 * sizeof(void*), "six pointers, a binary contract");

namespace {

enum class Format { kHls, kTs, kFlv, kMp4 };

struct FormatRow {
  const char* marker;  // found anywhere in the cleaned address
  const char* status;
  Format format;
};

// Tried in this order. The last row matches every address.
constexpr std::array kFormats = {
    FormatRow{"m3u8", "PLAY M3U8:", Format::kHls},
    FormatRow{".ts", "PLAY TS:", Format::kTs},
    FormatRow{".flv", "PLAY FLV:", Format::kFlv},
    FormatRow{"", "PLAY MP4:", Format::kMp4},
};

bool Contains(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

bool IsAccepted(const std::string& url) { return Contains(url, "http") || IsFileUrl(url); }

const FormatRow& FormatOf(const std::string& url) {
  for (const FormatRow& row : kFormats) {
    if (Contains(url, row.marker)) return row;
  }
  return kFormats.back();
}

void ZeroFill(void* object, std::size_t size) { std::memset(object, 0, size); }

// Pipelines are zero-filled before they are constructed.
template <typename Pipeline>
Pipeline* MakePipeline(CStreamPlayerImp* player) {
  const auto release = [](void* memory) { ::operator delete(memory); };
  std::unique_ptr<void, decltype(release)> memory(::operator new(sizeof(Pipeline)), release);
  ZeroFill(memory.get(), sizeof(Pipeline));
  auto* pipeline = new (memory.get()) Pipeline(player);
  (void)memory.release();
  return pipeline;
}

template <typename Pipeline>
void Play(Pipeline*& pipeline, CStreamPlayerImp* player, const std::string& url) {
  if (pipeline == nullptr) pipeline = MakePipeline<Pipeline>(player);
  pipeline->BeginDownload(url);
}

// Calls `ask` for every existing pipeline in this order, also after one returned true. Returns
// whether any did.
template <typename Ask, typename... Pipelines>
bool AnyOf(const Ask& ask, Pipelines*... pipelines) {
  bool any = false;
  ((any = (pipelines != nullptr && ask(*pipelines)) || any), ...);
  return any;
}

}  // namespace

CStreamDownloader::CStreamDownloader(CStreamPlayerImp* player)
    : player_(player),
      hls_(nullptr),
      reserved_(nullptr),
      mp4_(nullptr),
      flv_(nullptr),
      ts_(nullptr) {
  RecordNativePlayer(player);
}

CStreamDownloader::~CStreamDownloader() {
  EndDownload();
  // Kept for compatibility: the MP4, FLV and TS pipelines are stopped but not deleted.
  delete hls_;
  hls_ = nullptr;
  reserved_ = nullptr;
  mp4_ = nullptr;
  flv_ = nullptr;
  ts_ = nullptr;
}

CStreamDownloader& CStreamDownloader::operator=(const CStreamDownloader& other) = default;

// Takes the address by value: part of the binary interface.
bool CStreamDownloader::BeginDownload(
    std::string url) {  // NOLINT(performance-unnecessary-value-param)
  if (url.empty()) return false;
  const PlayerPort player(player_);
  const std::string clean = CleanUrl(url);
  if (!IsAccepted(clean)) {
    player.Message("PLAY UNKOWN:" + url);  // Kept for compatibility: the spelling
    return false;
  }
  PrepareTransfers();
  CountStart();
  const FormatRow& row = FormatOf(clean);
  player.Message(row.status + url);  // the address as given, not cleaned
  switch (row.format) {
    case Format::kHls:
      Play(hls_, player_, clean);
      break;
    case Format::kTs:
      Play(ts_, player_, clean);
      break;
    case Format::kFlv:
      Play(flv_, player_, clean);
      break;
    case Format::kMp4:
      Play(mp4_, player_, clean);
      break;
  }
  return true;
}

bool CStreamDownloader::EndDownload() {
  const auto end = [](auto& pipeline) { return pipeline.EndDownload(); };
  return AnyOf(end, hls_, mp4_, flv_, ts_);
}

bool CStreamDownloader::SetStartPostion(float seconds) {
  const auto set = [seconds](auto& pipeline) { return pipeline.SetStartPostion(seconds); };
  return AnyOf(set, hls_, mp4_, flv_, ts_);
}
