#include "ts/ts_download.h"

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstring>

#include "common/address.h"
#include "common/http_transfer.h"
#include "common/platform.h"
#include "ts/ts_state.h"

namespace {

// The bytes as text, up to their first zero.
std::string TextOf(const char* bytes, std::size_t size) {
  return bytes == nullptr ? std::string() : std::string(bytes, strnlen(bytes, size));
}

void ReportRefused(const char* data, std::size_t size) {
  TsPlayer().Message("PLAY TS NO:" + TsUrl() + ":" + TextOf(data, size));
}

// Reads to the end of the file, no faster than 10240 bytes in 10 ms on purpose. What the callback
// returns does not end the reading, but a stop does, after the callback was told of it once.
void ReadLocalFile(const std::string& path) {
  constexpr std::size_t kPieceSize = 10240;
  constexpr unsigned kPauseMilliseconds = 10;
  const platform::File file = platform::OpenFile(path, "rb+");
  if (file == nullptr) return;
  // The offset is taken as a 32-bit number on purpose.
  std::fseek(file.get(), static_cast<std::int32_t>(g_tsDownloaded.load()), SEEK_SET);

  std::array<char, kPieceSize> piece;
  while (std::feof(file.get()) == 0 && std::ferror(file.get()) == 0) {
    const std::size_t length = std::fread(piece.data(), 1, piece.size(), file.get());
    const std::size_t taken = GuardedCallback<TakeTsBytes>(piece.data(), 1, length, nullptr);
    if (taken == 0 && !g_tsRunning.load()) return;
    platform::SleepMilliseconds(kPauseMilliseconds);
  }
}

std::uint32_t UnreadSize() {
  const std::lock_guard lock(g_tsStreamLock);
  return g_tsStreamBuffer->Size();
}

}  // namespace

void AwaitStreamRoom(std::uint32_t most_unread) {
  while (g_tsRunning.load() && UnreadSize() >= most_unread) platform::SleepMilliseconds(1);
}

std::size_t TakeTsBytes(char* data, std::size_t size, std::size_t count, void* /*user*/) {
  const auto length = static_cast<std::uint32_t>(size * count);
  if (!g_tsRunning.load() || IsHtmlPage(data, length)) {
    ReportRefused(data, length);
    return 0;
  }
  if (g_tsDownloaded.load() == 0) TsPlayer().Message("PLAY TS OK:" + TsUrl());
  AwaitStreamRoom(kMostUnreadTsBytes);
  const std::lock_guard lock(g_tsStreamLock);
  if (data != nullptr && g_tsStreamBuffer->Append(data, length) != kBufferOk) return 0;
  g_tsDownloaded += length;
  return length;
}

void DownloadTs(const std::string& url) {
  if (IsFileUrl(url)) {
    ReadLocalFile(FileUrlPath(url));
  } else {
    Download({url, GuardedCallback<TakeTsBytes>, g_tsRunning}, g_tsDownloaded.load());
  }
}
