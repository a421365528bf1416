#include "flv/flv_stream.h"

#include <algorithm>
#include <cstring>

#include "common/platform.h"

std::atomic<bool> g_flvRunning{false};
NeverDestroyed<FlvStream> g_flvStream;

namespace {

constexpr unsigned kPollMilliseconds = 100;

void SleepUnlocked(std::unique_lock<std::mutex>& lock) {
  lock.unlock();
  platform::SleepMilliseconds(kPollMilliseconds);
  lock.lock();
}

}  // namespace

std::uint64_t FlvStream::Begin() {
  const std::lock_guard lock(mutex_);
  unread_.Initialize();
  unread_.Reset();
  received_ = 0;
  downloading_ = true;
  ready_.notify_all();  // who waits for an older stream waits in vain
  return ++stream_;
}

bool FlvStream::Stage(std::uint64_t stream, std::uint64_t offset, const void* bytes,
                      std::uint32_t size) {
  const std::lock_guard lock(mutex_);
  if (stream != stream_) return false;
  const std::uint64_t overlap = received_ > offset ? received_ - offset : 0;
  if (overlap >= size) return true;
  const auto fresh = static_cast<std::uint32_t>(size - overlap);
  if (unread_.Append(static_cast<const char*>(bytes) + overlap, fresh) != kBufferOk) return false;
  received_ += fresh;
  if (unread_.Size() > kReadySize) ready_.notify_all();
  return true;
}

void FlvStream::EndDownload(std::uint64_t stream) {
  const std::lock_guard lock(mutex_);
  if (stream != stream_) return;
  downloading_ = false;
  ready_.notify_all();
}

void FlvStream::Stop() {
  // Taken so that nobody can be between looking and waiting.
  const std::lock_guard lock(mutex_);
  ready_.notify_all();
}

bool FlvStream::MoreMayCome(std::uint64_t stream) const {
  return stream == stream_ && downloading_ && g_flvRunning.load();
}

void FlvStream::AwaitReady(std::uint64_t stream) {
  Lock lock(mutex_);
  ready_.wait(lock, [this, stream] { return unread_.Size() > kReadySize || !MoreMayCome(stream); });
}

bool FlvStream::AwaitUnread(std::uint64_t stream, std::uint32_t count, Lock& lock) const {
  while (unread_.Size() < count && MoreMayCome(stream)) SleepUnlocked(lock);
  return stream == stream_ && unread_.Size() >= count;
}

bool FlvStream::Await(std::uint64_t stream, std::uint32_t count) {
  Lock lock(mutex_);
  return AwaitUnread(stream, count, lock);
}

bool FlvStream::Read(std::uint64_t stream, std::uint8_t* bytes, std::uint32_t count) {
  Lock lock(mutex_);
  if (!AwaitUnread(stream, count, lock)) return false;
  if (count > 0) std::memcpy(bytes, unread_.ContinuePtr(), count);
  unread_.MoveStart(count);
  return true;
}

// Drops what comes as it comes, so that a stream cannot have us keep what it will not have read.
bool FlvStream::Skip(std::uint64_t stream, std::uint32_t count) {
  Lock lock(mutex_);
  while (stream == stream_) {
    const std::uint32_t dropped = std::min(count, unread_.Size());
    unread_.MoveStart(dropped);
    count -= dropped;
    if (count == 0) return true;
    if (!MoreMayCome(stream)) return false;
    SleepUnlocked(lock);
  }
  return false;
}

std::uint32_t FlvStream::UnreadSize() const {
  const std::lock_guard lock(mutex_);
  return unread_.Size();
}
