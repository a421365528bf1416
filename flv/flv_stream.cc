#include "flv/flv_stream.h"

#include "common/clock.h"

#include <algorithm>
#include <cstring>

std::atomic<bool> g_flvRunning{false};
NeverDestroyed<FlvStream> g_flvStream;

namespace {

constexpr std::chrono::milliseconds kPoll{100};
constexpr std::chrono::milliseconds kRoomPoll{1};

void SleepUnlocked(std::unique_lock<std::mutex>& lock, std::chrono::milliseconds duration) {
  lock.unlock();
  SleepFor(duration);
  lock.lock();
}

}  // namespace

std::uint64_t FlvStream::Begin() {
  const std::lock_guard lock(mutex_);
  unread_->Initialize();
  unread_->Reset();
  received_ = 0;
  dropped_ = 0;
  downloading_ = true;
  parsing_ = true;
  ready_.notify_all();  // ends the wait for an older stream
  return ++stream_;
}

bool FlvStream::Stage(std::uint64_t stream, std::uint64_t offset, const void* bytes,
                      std::uint32_t size) {
  Lock lock(mutex_);
  if (!AwaitRoom(stream, offset + size, lock)) return false;
  const std::uint64_t overlap = received_ > offset ? received_ - offset : 0;
  if (overlap >= size) return true;
  const auto fresh = static_cast<std::uint32_t>(size - overlap);
  if (!parsing_) {
    dropped_ += fresh;
  } else if (unread_->Append(static_cast<const char*>(bytes) + overlap, fresh) != kBufferOk) {
    return false;
  }
  received_ += fresh;
  if (unread_->Size() > kReadySize) ready_.notify_all();
  return true;
}

// Waits for space. Also returns true if all bytes up to `end` have been received already.
bool FlvStream::AwaitRoom(std::uint64_t stream, std::uint64_t end, Lock& lock) const {
  while (stream == stream_) {
    if (unread_->Size() < most_unread_ || received_ >= end) return true;
    if (!g_flvRunning.load()) return false;
    SleepUnlocked(lock, kRoomPoll);
  }
  return false;
}

void FlvStream::EndDownload(std::uint64_t stream) {
  const std::lock_guard lock(mutex_);
  if (stream != stream_) return;
  downloading_ = false;
  ready_.notify_all();
}

void FlvStream::EndParsing(std::uint64_t stream) {
  const std::lock_guard lock(mutex_);
  if (stream != stream_) return;
  parsing_ = false;
  dropped_ += unread_->Size();
  unread_.emplace();
}

void FlvStream::Release() {
  const std::lock_guard lock(mutex_);
  unread_.emplace();
}

void FlvStream::Stop() {
  // Locked so that no thread is between checking its condition and waiting.
  const std::lock_guard lock(mutex_);
  ready_.notify_all();
}

bool FlvStream::MayReceiveMore(std::uint64_t stream) const {
  return stream == stream_ && downloading_ && g_flvRunning.load();
}

void FlvStream::AwaitReady(std::uint64_t stream) {
  Lock lock(mutex_);
  CurrentClock().Wait(ready_, lock, [this, stream] {
    return unread_->Size() > kReadySize || !MayReceiveMore(stream);
  });
}

bool FlvStream::AwaitUnread(std::uint64_t stream, std::uint32_t count, Lock& lock) const {
  while (unread_->Size() < count && MayReceiveMore(stream)) {
    SleepUnlocked(lock, kPoll);
  }
  return stream == stream_ && unread_->Size() >= count;
}

bool FlvStream::Await(std::uint64_t stream, std::uint32_t count) {
  Lock lock(mutex_);
  return AwaitUnread(stream, count, lock);
}

bool FlvStream::Read(std::uint64_t stream, std::uint8_t* bytes, std::uint32_t count) {
  Lock lock(mutex_);
  if (!AwaitUnread(stream, count, lock)) return false;
  if (count > 0) std::memcpy(bytes, unread_->ContinuePtr(), count);
  unread_->MoveStart(count);
  return true;
}

// Skips in pieces, since no more than most_unread_ bytes can be unread at once.
bool FlvStream::Skip(std::uint64_t stream, std::uint32_t count) {
  Lock lock(mutex_);
  while (count > 0) {
    const std::uint32_t piece = std::min(count, most_unread_);
    if (!AwaitUnread(stream, piece, lock)) return false;
    unread_->MoveStart(piece);
    count -= piece;
  }
  return true;
}

std::uint32_t FlvStream::UnreadSize() const {
  const std::lock_guard lock(mutex_);
  return unread_->Size();
}

std::uint64_t FlvStream::DroppedSize() const {
  const std::lock_guard lock(mutex_);
  return dropped_;
}
