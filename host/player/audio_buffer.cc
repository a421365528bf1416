#include "audio_buffer.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace player {
namespace {

constexpr std::size_t kCapacityFrames = kAudioSampleRate / 2;

double SecondsOfFrames(std::size_t frames) {
  return static_cast<double>(frames) / kAudioSampleRate;
}

}  // namespace

bool AudioBuffer::Push(AudioChunk chunk) {
  std::unique_lock lock(mutex_);
  space_available_.wait(lock, [this] { return closed_ || frames_ < kCapacityFrames; });
  if (closed_) return false;
  if (chunk.Frames() == 0) return true;
  frames_ += chunk.Frames();
  chunks_.push_back(std::move(chunk));
  return true;
}

void AudioBuffer::Fill(std::span<float> out, double heard_at) {
  std::fill(out.begin(), out.end(), 0.0F);
  if (!clock_.IsRunning()) return;
  const std::lock_guard lock(mutex_);
  const std::size_t wanted = out.size() / kAudioChannels;
  std::size_t done = 0;
  bool heard = false;  // whether the clock knows the audio at `done`
  while (done < wanted && !chunks_.empty()) {
    const double at = heard_at + SecondsOfFrames(done);
    if (const std::size_t silence = SilenceBefore(at); silence > 0) {
      clock_.MarkSilence(at);
      heard = false;
      done += silence;
      continue;
    }
    if (!heard || !ContinuesPrevious()) clock_.Hear(Next(), at, OrderOfNext());
    heard = true;
    done += CopyFromFirst(out.subspan(done * kAudioChannels));
  }
  underrun_ = done < wanted;
  if (underrun_) clock_.MarkSilence(heard_at + SecondsOfFrames(done));
  space_available_.notify_one();
}

std::optional<double> AudioBuffer::NextSeconds() const {
  const std::lock_guard lock(mutex_);
  if (chunks_.empty()) return std::nullopt;
  return Next();
}

bool AudioBuffer::IsEmpty() const {
  const std::lock_guard lock(mutex_);
  return chunks_.empty();
}

void AudioBuffer::Close() {
  const std::lock_guard lock(mutex_);
  closed_ = true;
  chunks_.clear();
  frames_ = 0;
  consumed_ = 0;
  space_available_.notify_all();
}

double AudioBuffer::Next() const { return chunks_.front().seconds + SecondsOfFrames(consumed_); }

bool AudioBuffer::ContinuesPrevious() const {
  constexpr double kSameTime = 0.03;  // stream times are rounded
  return previous_end_ && std::abs(Next() - *previous_end_) < kSameTime;
}

PlayClock::Order AudioBuffer::OrderOfNext() const {
  return !previous_end_ || ContinuesPrevious() ? PlayClock::Order::kContinues
                                               : PlayClock::Order::kJumps;
}

// Audio that continues the previous audio is always due, because it sets the clock.
std::size_t AudioBuffer::SilenceBefore(double at) const {
  constexpr double kExact = 0.001;
  if (!underrun_ && ContinuesPrevious()) return 0;
  const double ahead = Next() - clock_.At(at).value_or(Next());
  if (ahead < kExact || ahead > kFarApart) return 0;  // this far ahead is a jump, not a gap
  return static_cast<std::size_t>(ahead * kAudioSampleRate) + 1;
}

std::size_t AudioBuffer::CopyFromFirst(std::span<float> out) {
  const AudioChunk& chunk = chunks_.front();
  const std::size_t count = std::min(out.size() / kAudioChannels, chunk.Frames() - consumed_);
  const auto from = chunk.samples.begin() + static_cast<std::ptrdiff_t>(consumed_ * kAudioChannels);
  std::copy_n(from, count * kAudioChannels, out.begin());
  consumed_ += count;
  frames_ -= count;
  previous_end_ = Next();
  if (consumed_ == chunk.Frames()) {
    chunks_.pop_front();
    consumed_ = 0;
  }
  return count;
}

}  // namespace player
