#include "flv/flv_state.h"

std::atomic<bool> g_flvRunning{false};

std::mutex g_flvStreamLock;
NeverDestroyed<CByteBuffer> g_flvStreamBuffer;
NeverDestroyed<std::condition_variable> g_flvDataReady;

namespace {

std::uint64_t g_flvStaged = 0;  // bytes of the stream staged so far; guarded by g_flvStreamLock

}  // namespace

void ResetFlvStream() {
  const std::lock_guard lock(g_flvStreamLock);
  g_flvStreamBuffer->Initialize();
  g_flvStreamBuffer->Reset();
  g_flvStaged = 0;
}

bool StageFlvBytes(std::uint64_t offset, const void* bytes, std::uint32_t size) {
  const std::lock_guard lock(g_flvStreamLock);
  const std::uint64_t known = g_flvStaged > offset ? g_flvStaged - offset : 0;
  if (known >= size) return true;
  const auto fresh = static_cast<std::uint32_t>(size - known);
  if (g_flvStreamBuffer->Append(static_cast<const char*>(bytes) + known, fresh) != kBufferOk) {
    return false;
  }
  g_flvStaged += fresh;
  if (g_flvStreamBuffer->Size() > kFlvReadySize) g_flvDataReady->notify_all();
  return true;
}

std::uint32_t StagedFlvBytes() {
  const std::lock_guard lock(g_flvStreamLock);
  return g_flvStreamBuffer->Size();
}

void WakeFlvPlayer() {
  // Taken so that the task cannot be between looking and waiting.
  { const std::lock_guard lock(g_flvStreamLock); }
  g_flvDataReady->notify_all();
}
