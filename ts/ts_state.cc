#include "ts/ts_state.h"

std::atomic<bool> g_tsRunning{false};
std::atomic<std::uint64_t> g_tsDownloaded{0};

std::mutex g_tsStateLock;
PlayerPort g_tsPlayer;
NeverDestroyed<std::string> g_tsUrl;
NeverDestroyed<std::string> g_tsTempPath;

std::mutex g_tsStreamLock;
NeverDestroyed<CByteBuffer> g_tsStreamBuffer;

NeverDestroyed<std::array<CopyBuffer, 3>> g_tsScratch;

std::string TsUrl() {
  const std::lock_guard lock(g_tsStateLock);
  return *g_tsUrl;
}
