#include "play_clock.h"

#include <cmath>

namespace player {

void PlayClock::Start(double stream, double now) {
  const std::lock_guard lock(mutex_);
  started_ = true;
  stream_ = stream;
  moment_ = now;
}

bool PlayClock::HasStarted() const {
  const std::lock_guard lock(mutex_);
  return started_;
}

void PlayClock::Hear(double stream, double at) {
  // Devices ask for sound in portions and not quite evenly. A larger distance is real.
  constexpr double kUneven = 0.06;
  constexpr double kShareTaken = 0.1;
  const std::lock_guard lock(mutex_);
  const bool goes_on = heard_;
  heard_ = true;
  heard_stream_ = stream;
  heard_moment_ = at;
  if (!started_ || IsHeld()) return;
  const double expected = StreamAt(at);
  const double wrong = stream - expected;
  stream_ = goes_on && std::abs(wrong) < kUneven ? expected + kShareTaken * wrong : stream;
  moment_ = at;
}

void PlayClock::HearNothing() {
  const std::lock_guard lock(mutex_);
  heard_ = false;
}

void PlayClock::SetPaused(bool paused, double now) {
  const std::lock_guard lock(mutex_);
  SetHeld(paused_, paused, now);
}

void PlayClock::SetStarved(bool starved, double now) {
  const std::lock_guard lock(mutex_);
  SetHeld(starved_, starved, now);
}

bool PlayClock::IsPaused() const {
  const std::lock_guard lock(mutex_);
  return paused_;
}

bool PlayClock::IsRunning() const {
  const std::lock_guard lock(mutex_);
  return started_ && !IsHeld();
}

std::optional<double> PlayClock::At(double now) const {
  const std::lock_guard lock(mutex_);
  if (!started_) return std::nullopt;
  return StreamAt(now);
}

std::optional<double> PlayClock::HeardAt(double now) const {
  const std::lock_guard lock(mutex_);
  if (!heard_ || IsHeld()) return std::nullopt;
  return heard_stream_ + (now - heard_moment_);
}

double PlayClock::StreamAt(double now) const {
  return IsHeld() ? stream_ : stream_ + (now - moment_);
}

void PlayClock::SetHeld(bool& reason, bool held, double now) {
  if (reason == held) return;
  stream_ = StreamAt(now);
  moment_ = now;
  reason = held;
  if (held) heard_ = false;
}

}  // namespace player
