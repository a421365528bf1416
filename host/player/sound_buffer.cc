#include "sound_buffer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace player {
namespace {

constexpr std::size_t kRoom = kSoundRate / 2;

double SecondsOfFrames(std::size_t frames) { return static_cast<double>(frames) / kSoundRate; }

}  // namespace

bool SoundBuffer::Push(AudioPiece piece) {
  std::unique_lock lock(mutex_);
  space_available_.wait(lock, [this] { return closed_ || frames_ < kRoom; });
  if (closed_) return false;
  if (piece.Frames() == 0) return true;
  frames_ += piece.Frames();
  pieces_.push_back(std::move(piece));
  return true;
}

void SoundBuffer::Fill(std::span<float> out, double heard_at) {
  std::fill(out.begin(), out.end(), 0.0F);
  if (!clock_.IsRunning()) return;
  const std::lock_guard lock(mutex_);
  const std::size_t wanted = out.size() / kSoundChannels;
  std::size_t done = 0;
  bool heard = false;  // whether the clock knows the audio at `done`
  while (done < wanted && !pieces_.empty()) {
    const double at = heard_at + SecondsOfFrames(done);
    if (const std::size_t silence = SilenceBefore(at); silence > 0) {
      clock_.MarkSilence(at);
      heard = false;
      done += silence;
      continue;
    }
    if (!heard || !Follows()) clock_.Hear(Next(), at, OrderOfNext());
    heard = true;
    done += Take(out.subspan(done * kSoundChannels));
  }
  dry_ = done < wanted;
  if (dry_) clock_.MarkSilence(heard_at + SecondsOfFrames(done));
  space_available_.notify_one();
}

std::optional<double> SoundBuffer::NextSeconds() const {
  const std::lock_guard lock(mutex_);
  if (pieces_.empty()) return std::nullopt;
  return Next();
}

bool SoundBuffer::IsEmpty() const {
  const std::lock_guard lock(mutex_);
  return pieces_.empty();
}

void SoundBuffer::Close() {
  const std::lock_guard lock(mutex_);
  closed_ = true;
  pieces_.clear();
  frames_ = 0;
  taken_ = 0;
  space_available_.notify_all();
}

double SoundBuffer::Next() const { return pieces_.front().seconds + SecondsOfFrames(taken_); }

bool SoundBuffer::Follows() const {
  constexpr double kSameTime = 0.03;  // stream times are rounded
  return ended_ && std::abs(Next() - *ended_) < kSameTime;
}

PlayClock::Order SoundBuffer::OrderOfNext() const {
  return !ended_ || Follows() ? PlayClock::Order::kFollows : PlayClock::Order::kJumps;
}

// Audio that continues the previous audio is always due, because it sets the clock.
std::size_t SoundBuffer::SilenceBefore(double at) const {
  constexpr double kExact = 0.001;
  if (!dry_ && Follows()) return 0;
  const double ahead = Next() - clock_.At(at).value_or(Next());
  if (ahead < kExact || ahead > kFarApart) return 0;  // this far ahead is a jump, not a gap
  return static_cast<std::size_t>(ahead * kSoundRate) + 1;
}

std::size_t SoundBuffer::Take(std::span<float> out) {
  const AudioPiece& piece = pieces_.front();
  const std::size_t count = std::min(out.size() / kSoundChannels, piece.Frames() - taken_);
  const auto from = piece.samples.begin() + static_cast<std::ptrdiff_t>(taken_ * kSoundChannels);
  std::copy_n(from, count * kSoundChannels, out.begin());
  taken_ += count;
  frames_ -= count;
  ended_ = Next();
  if (taken_ == piece.Frames()) {
    pieces_.pop_front();
    taken_ = 0;
  }
  return count;
}

}  // namespace player
