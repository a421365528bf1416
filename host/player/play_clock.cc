#include "play_clock.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <type_traits>

namespace player {
namespace {

// A device requests audio one portion ahead, so only a few entries are in the future.
constexpr std::size_t kMaxKept = 16;

// Returns the last entry in effect at `now`, or the first entry if none is.
template <typename Entry>
auto EntryAt(const std::deque<Entry>& entries, double now) {
  const auto counts = [now](const Entry& entry) { return entry.from <= now; };
  const auto last = std::find_if(entries.rbegin(), entries.rend(), counts);
  return last == entries.rend() ? entries.begin() : std::prev(last.base());
}

template <typename Entry>
void Keep(std::deque<Entry>& entries, const std::type_identity_t<Entry>& entry) {
  entries.push_back(entry);
  if (entries.size() > kMaxKept) entries.pop_front();
}

}  // namespace

void PlayClock::Start(double stream, double now) {
  const std::lock_guard lock(mutex_);
  started_ = true;
  lines_ = {{now, stream, now, ++segment_}};
}

bool PlayClock::HasStarted() const {
  const std::lock_guard lock(mutex_);
  return started_;
}

void PlayClock::Hear(double stream, double at, Order order) {
  const std::lock_guard lock(mutex_);
  if (!started_ || IsHeld()) return;
  SyncToAudio(stream, at, order);
  Keep(heard_audio_, {at, stream, lines_.back().segment});
}

void PlayClock::MarkSilence(double at) {
  const std::lock_guard lock(mutex_);
  if (!heard_audio_.empty() && heard_audio_.back().stream) Keep(heard_audio_, {at, {}, 0});
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

std::optional<PlayClock::StreamTime> PlayClock::TimeAt(double now) const {
  const std::lock_guard lock(mutex_);
  if (!started_) return std::nullopt;
  const Line& line = LineAt(now);
  return StreamTime{IsHeld() ? line.stream : line.At(now), line.segment};
}

std::optional<double> PlayClock::At(double now) const {
  const auto time = TimeAt(now);
  return time ? std::optional(time->seconds) : std::nullopt;
}

std::optional<PlayClock::StreamTime> PlayClock::AudioAt(double now) const {
  const std::lock_guard lock(mutex_);
  if (heard_audio_.empty() || IsHeld()) return std::nullopt;
  const auto audio = EntryAt(heard_audio_, now);
  if (!audio->stream || audio->from > now) return std::nullopt;
  return StreamTime{*audio->stream + (now - audio->from), audio->segment};
}

std::optional<double> PlayClock::HeardAt(double now) const {
  const auto audio = AudioAt(now);
  return audio ? std::optional(audio->seconds) : std::nullopt;
}

const PlayClock::Line& PlayClock::LineAt(double now) const { return *EntryAt(lines_, now); }

void PlayClock::SetHeld(bool& reason, bool held, double now) {
  if (reason == held) return;
  const Line& line = LineAt(now);
  lines_ = {{now, IsHeld() ? line.stream : line.At(now), now, line.segment}};
  reason = held;
  if (held) heard_audio_.clear();
}

// Without a jump the current line changes at once, so that it is known early what is due next.
// After a jump a new line takes effect when the audio is heard.
void PlayClock::SyncToAudio(double stream, double at, Order order) {
  // Devices request audio in portions and at slightly uneven intervals. A larger deviation is real.
  constexpr double kUneven = 0.06;
  constexpr double kCorrectionShare = 0.1;
  const bool continues = !heard_audio_.empty() && heard_audio_.back().stream;
  const double expected = LineAt(at).At(at);
  const double wrong = stream - expected;
  const bool is_close = std::abs(wrong) < kUneven;
  if (std::abs(wrong) > kFarApart || (order == Order::kJumps && !is_close)) {
    Keep(lines_, {at, stream, at, ++segment_});
    return;
  }
  Line& line = lines_.back();
  line.stream = continues && is_close ? expected + kCorrectionShare * wrong : stream;
  line.moment = at;
}

}  // namespace player
