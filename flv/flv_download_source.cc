#include "flv/flv_download_source.h"

#include <cstring>

#include "common/platform.h"
#include "flv/flv_state.h"

bool FlvDownloadSource::Await(std::uint32_t count, std::unique_lock<std::mutex>& lock) const {
  constexpr unsigned kPollMilliseconds = 100;
  // The flag is looked at before the buffer: once it is clear nothing more is staged.
  while (true) {
    const bool more_may_come = g_flvRunning.load() && downloading_.load();
    if (g_flvStreamBuffer->Size() >= count) return true;
    if (!more_may_come) return false;
    lock.unlock();
    platform::SleepMilliseconds(kPollMilliseconds);
    lock.lock();
  }
}

bool FlvDownloadSource::Await(std::uint32_t count) {
  std::unique_lock lock(g_flvStreamLock);
  return Await(count, lock);
}

bool FlvDownloadSource::Read(std::uint8_t* bytes, std::uint32_t count) {
  std::unique_lock lock(g_flvStreamLock);
  if (!Await(count, lock)) return false;
  if (count > 0) std::memcpy(bytes, g_flvStreamBuffer->ContinuePtr(), count);
  g_flvStreamBuffer->MoveStart(count);
  return true;
}

bool FlvDownloadSource::Skip(std::uint32_t count) {
  std::unique_lock lock(g_flvStreamLock);
  if (!Await(count, lock)) return false;
  g_flvStreamBuffer->MoveStart(count);
  return true;
}
