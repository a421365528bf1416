#include "ts/ts_state.h"

namespace stream {

std::atomic<bool> g_tsRunning{false};
std::atomic<std::uint64_t> g_tsDownloaded{0};

Mutex g_tsStreamLock;
NeverDestroyed<CByteBuffer> g_tsStreamBuffer;
NeverDestroyed<std::string> g_tsUrl;

PlayerPort g_tsPlayer;
NeverDestroyed<std::string> g_tsTempPath;
NeverDestroyed<std::array<CopyBuffer, 3>> g_tsScratch;

std::string TsUrl() {
  const MutexLock lock(g_tsStreamLock);
  return *g_tsUrl;
}

}  // namespace stream
