#include "ts/ts_download.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "common/address.h"
#include "common/clock.h"
#include "common/http_transfer.h"
#include "common/special_file.h"
#include "platform/files.h"
#include "ts/ts_state.h"

namespace stream {
namespace {

// Returns the bytes up to the first zero as text.
std::string TextOf(const char* bytes, std::size_t size) {
  return bytes == nullptr ? std::string() : std::string(bytes, strnlen(bytes, size));
}

// What the write callback works on.
struct RunningDownload {
  TsTransfer& transfer;
  CURL* handle;  // null for a local file
};

// Returns whether the body begins at the requested offset. A server that does not answer with
// status 206 sends the stream from its beginning. A local file that libcurl reads has no status and
// begins at the requested offset.
bool IsPartialReply(CURL* handle) {
  constexpr long kNoStatus = 0;
  constexpr long kPartialContent = 206;
  long status = 0;
  return handle == nullptr ||
         (curl_easy_getinfo(handle, CURLINFO_RESPONSE_CODE, &status) == CURLE_OK &&
          (status == kPartialContent || status == kNoStatus));
}

// The write callback of libcurl; `user` is a RunningDownload. The reader of local files calls it
// too.
std::size_t OnTsBytes(char* data, std::size_t size, std::size_t count, void* user) {
  const RunningDownload& running = *static_cast<RunningDownload*>(user);
  TsTransfer& transfer = running.transfer;
  if (transfer.IsAtStart() && !IsPartialReply(running.handle)) transfer.BodyBeginsAt(0);
  return transfer.OnBytes(data, static_cast<std::uint32_t>(size * count));
}

void FetchUrl(const std::string& url, TsTransfer& transfer) {
  RunningDownload running{transfer, nullptr};
  const Transfer request{url, GuardedCallback<OnTsBytes>, &running, g_tsRunning};
  const CurlHandle handle = SetUpDownload(request, transfer.Offset());
  running.handle = handle.get();
  PerformDownload(handle, request);
}

// Positions the file and returns the position, or 0 if that fails. Kept for compatibility: the
// offset is converted to a signed 32-bit number.
std::uint64_t SeekTo(std::uint64_t offset, std::FILE* file) {
  const auto position = static_cast<std::int32_t>(offset);
  return std::fseek(file, position, SEEK_SET) == 0 ? static_cast<std::uint64_t>(position) : 0;
}

// Reads to the end of the file. Kept for compatibility: reads at most 10240 bytes in 10 ms. A
// callback that returns 0 ends the reading only after a stop, so the callback notices every stop
// once.
void ReadLocalFile(const std::string& path, TsTransfer& transfer) {
  constexpr std::size_t kPieceSize = 10240;
  constexpr std::chrono::milliseconds kPause{10};
  const platform::File file = platform::OpenFile(path, "rb+");
  if (file == nullptr) return;
  transfer.BodyBeginsAt(SeekTo(transfer.Offset(), file.get()));
  RunningDownload running{transfer, nullptr};

  std::array<char, kPieceSize> piece;
  while (std::feof(file.get()) == 0 && std::ferror(file.get()) == 0) {
    const std::size_t length = std::fread(piece.data(), 1, piece.size(), file.get());
    const std::size_t taken = GuardedCallback<OnTsBytes>(piece.data(), 1, length, &running);
    if (taken == 0 && !g_tsRunning.load()) return;
    SleepFor(kPause);
  }
}

std::uint32_t UnreadSize() {
  const MutexLock lock(g_tsStreamLock);
  return g_tsStreamBuffer->Size();
}

}  // namespace

void WaitForStreamSpace(std::uint32_t max_unread) {
  while (g_tsRunning.load() && UnreadSize() >= max_unread) SleepFor(std::chrono::milliseconds(1));
}

TsTransfer::TsTransfer(const PlayerPort& player, std::uint64_t offset)
    : player_(player), offset_(offset), packets_(offset) {}

std::size_t TsTransfer::OnBytes(const char* data, std::uint32_t length) {
  is_at_start_ = false;
  if (!g_tsRunning.load() || IsHtmlPage(data, length)) {
    player_.Message("PLAY TS NO:" + TsUrl() + ":" + TextOf(data, length));
    return 0;
  }
  if (g_tsDownloaded.load() == 0) player_.Message("PLAY TS OK:" + TsUrl());
  WaitForStreamSpace(kMaxUnreadTsBytes);
  const MutexLock lock(g_tsStreamLock);
  if (data != nullptr && !packets_.Append(data, length, *g_tsStreamBuffer)) return 0;
  g_tsDownloaded += length;
  return length;
}

void DownloadTs(const std::string& url, const PlayerPort& player) {
  TsTransfer transfer(player, g_tsDownloaded.load());
  if (IsFileUrl(url)) {
    const std::string path = FileUrlPath(url);
    if (!RefuseSpecialFile(path, url)) ReadLocalFile(path, transfer);
  } else {
    FetchUrl(url, transfer);
  }
}

}  // namespace stream
