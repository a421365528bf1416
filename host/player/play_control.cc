#include "play_control.h"

#include <algorithm>
#include <utility>

#include "end_rule.h"
#include "seek_target.h"

namespace player {

PlayControl::PlayControl(Settings settings, const Dependencies& dependencies)
    : settings_(std::move(settings)), dependencies_(dependencies) {}

bool PlayControl::Begin() { return StartDownload(); }

void PlayControl::End() {
  if (playback_ != nullptr) StopDownload();
}

void PlayControl::Tick() {
  // The first frame gives the origin of the stream, from which positions are counted.
  if (settings_.start_seconds && dependencies_.receiver.OriginSeconds()) {
    const double start = *std::exchange(settings_.start_seconds, {});
    if (CanSeek()) SeekTo(start);
  }
  playback_->Tick(Now());
  const bool has_ended = IsSilent();
  playback_->SetStreamEnded(has_ended);
  ended_ = has_ended && playback_->IsPlayedOut();
  if (const auto at = FromOrigin(playback_->clock().At(Now()))) position_ = *at;
}

void PlayControl::TogglePause() {
  paused_ = !paused_;
  playback_->clock().SetPaused(paused_, Now());
}

void PlayControl::SeekBy(double seconds) {
  if (!CanSeek()) return;
  const auto duration = dependencies_.receiver.LatestStatus().duration;
  SeekTo(SeekTarget(position_, seconds, duration));
}

TitleFacts PlayControl::Facts() const {
  TitleFacts facts;
  const StreamStatus latest = dependencies_.receiver.LatestStatus();
  const bool plays = playback_ != nullptr && playback_->clock().HasStarted();
  if (plays) facts.position = position_;
  facts.duration = latest.duration;
  facts.buffered = FromOrigin(dependencies_.receiver.FarthestSeconds());
  if (latest.buffered)
    facts.buffered = std::max<double>(facts.buffered.value_or(0), *latest.buffered);
  facts.status = latest.status;
  facts.state = paused_  ? PlayState::kPaused
                : ended_ ? PlayState::kEnded
                : plays  ? PlayState::kPlaying
                         : PlayState::kWaiting;
  return facts;
}

bool PlayControl::StartDownload() {
  if (dependencies_.before_start) dependencies_.before_start();
  Playback::Settings settings;
  settings.pictures_shown_later = [this] { return dependencies_.receiver.IsFlv(); };
  settings.may_begin_with_leftover = std::exchange(started_before_, true);
  playback_ = std::make_unique<Playback>(dependencies_.counts, std::move(settings));
  playback_->clock().SetPaused(paused_, Now());
  dependencies_.receiver.SetQueue(&playback_->frames());
  dependencies_.output.Play(&playback_->audio());
  began_ms_ = dependencies_.clock.NowMs();
  frames_before_ = FramesSoFar();
  ended_ = false;
  return dependencies_.downloader.Begin(settings_.address);
}

void PlayControl::SeekTo(double seconds) {
  StopDownload();
  dependencies_.receiver.KeepOrigin();
  seeked_ = true;
  position_ = seconds;
  dependencies_.downloader.SetStart(static_cast<float>(seconds));
  StartDownload();
}

// Closes the playback first: EndDownload waits for player calls, which may be waiting for space in
// its queues.
void PlayControl::StopDownload() {
  playback_->Close();
  dependencies_.downloader.End();
  dependencies_.receiver.SetQueue(nullptr);
  dependencies_.output.Play(nullptr);
  playback_.reset();
}

// FLV always plays from its beginning. Before the first frame, the origin of the stream is unknown.
bool PlayControl::CanSeek() const {
  return dependencies_.receiver.OriginSeconds().has_value() && !dependencies_.receiver.IsFlv();
}

// After a seek the component may skip much of the stream before it delivers the first frame.
double PlayControl::IdleLimitMs() const {
  constexpr double kIdleFactorAfterSeek = 20;
  const bool still_seeking = seeked_ && FramesSoFar() == frames_before_;
  return settings_.idle_seconds * 1000 * (still_seeking ? kIdleFactorAfterSeek : 1);
}

std::uint64_t PlayControl::FramesSoFar() const {
  return dependencies_.counts.video_frames + dependencies_.counts.audio_frames;
}

bool PlayControl::IsSilent() const {
  const host::EndRule rule{IdleLimitMs(), std::nullopt};
  const double last = std::max(dependencies_.receiver.LastArrivalMs(), began_ms_);
  return playback_->frames().IsIdle() &&
         host::ReasonToEnd(rule, {dependencies_.clock.NowMs(), began_ms_, last, false}).has_value();
}

std::optional<double> PlayControl::FromOrigin(std::optional<double> stream_seconds) const {
  const auto origin = dependencies_.receiver.OriginSeconds();
  if (!stream_seconds || !origin) return std::nullopt;
  return std::max(*stream_seconds - *origin, 0.0);
}

}  // namespace player
