#include "flv/flv_stream.h"

#include <algorithm>
#include <cstring>

namespace stream {

std::atomic<bool> g_flvRunning{false};
NeverDestroyed<FlvStream> g_flvStream;

namespace {

constexpr std::chrono::milliseconds kPoll{100};
constexpr std::chrono::milliseconds kSpacePoll{1};

}  // namespace

RunId FlvStream::Begin() {
  const MutexLock lock(mutex_);
  unread_->Initialize();
  unread_->Reset();
  received_ = 0;
  dropped_ = 0;
  downloading_ = true;
  parsing_ = true;
  ready_.notify_all();  // ends the wait of an older run
  return runs_.Next();
}

bool FlvStream::Stage(RunId run, std::uint64_t offset, const void* bytes, std::uint32_t size) {
  const MutexLock lock(mutex_);
  if (!WaitForSpace(run, offset + size)) return false;
  const std::uint64_t overlap = received_ > offset ? received_ - offset : 0;
  if (overlap >= size) return true;
  const auto added = static_cast<std::uint32_t>(size - overlap);
  if (!parsing_) {
    dropped_ += added;
  } else if (unread_->Append(static_cast<const char*>(bytes) + overlap, added) != kBufferOk) {
    return false;
  }
  received_ += added;
  if (unread_->Size() > kReadySize) ready_.notify_all();
  return true;
}

// Waits for space. Also returns true if all bytes up to `end` have been received already.
bool FlvStream::WaitForSpace(RunId run, std::uint64_t end) const {
  while (runs_.IsCurrent(run)) {
    if (unread_->Size() < max_unread_ || received_ >= end) return true;
    if (!g_flvRunning.load()) return false;
    SleepUnlocked(kSpacePoll);
  }
  return false;
}

void FlvStream::SleepUnlocked(Clock::Duration duration) const {
  const MutexUnlock unlocked(mutex_);
  SleepFor(duration);
}

void FlvStream::MarkEndOfInput(RunId run) {
  const MutexLock lock(mutex_);
  if (!runs_.IsCurrent(run)) return;
  downloading_ = false;
  ready_.notify_all();
}

void FlvStream::EndParsing(RunId run) {
  const MutexLock lock(mutex_);
  if (!runs_.IsCurrent(run)) return;
  parsing_ = false;
  dropped_ += unread_->Size();
  unread_.emplace();
}

void FlvStream::Release() {
  const MutexLock lock(mutex_);
  unread_.emplace();
}

void FlvStream::Wake() {
  // Locked so that no thread is between checking its condition and waiting.
  const MutexLock lock(mutex_);
  ready_.notify_all();
}

bool FlvStream::MayReceiveMore(RunId run) const {
  return runs_.IsCurrent(run) && downloading_ && g_flvRunning.load();
}

void FlvStream::WaitUntilReady(RunId run) {
  const MutexLock lock(mutex_);
  CurrentClock().Wait(ready_, mutex_, [this, run]() REQUIRES(mutex_) {
    return unread_->Size() > kReadySize || !MayReceiveMore(run);
  });
}

bool FlvStream::WaitForUnread(RunId run, std::uint32_t count) const {
  while (unread_->Size() < count && MayReceiveMore(run)) {
    SleepUnlocked(kPoll);
  }
  return runs_.IsCurrent(run) && unread_->Size() >= count;
}

bool FlvStream::WaitForBytes(RunId run, std::uint32_t count) {
  const MutexLock lock(mutex_);
  return WaitForUnread(run, count);
}

bool FlvStream::Read(RunId run, std::uint8_t* bytes, std::uint32_t count) {
  const MutexLock lock(mutex_);
  if (!WaitForUnread(run, count)) return false;
  if (count > 0) std::memcpy(bytes, unread_->ContinuePtr(), count);
  unread_->MoveStart(count);
  return true;
}

// Skips in pieces, since no more than max_unread_ bytes can be unread at once.
bool FlvStream::Skip(RunId run, std::uint32_t count) {
  const MutexLock lock(mutex_);
  while (count > 0) {
    const std::uint32_t piece = std::min(count, max_unread_);
    if (!WaitForUnread(run, piece)) return false;
    unread_->MoveStart(piece);
    count -= piece;
  }
  return true;
}

std::uint32_t FlvStream::UnreadSize() const {
  const MutexLock lock(mutex_);
  return unread_->Size();
}

std::uint64_t FlvStream::DroppedSize() const {
  const MutexLock lock(mutex_);
  return dropped_;
}

}  // namespace stream
