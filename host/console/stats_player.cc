#include "stats_player.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "guarded_call.h"
#include "text.h"

namespace host {

void StatsPlayer::OnDuration(float seconds) {
  GuardedCall([&] {
    if (Report* report = RecordingReport()) report->OnDuration(seconds);
    RecordNumber("duration", &PlayTotals::duration, seconds);
  });
}

void StatsPlayer::OnBufferedTime(float seconds) {
  GuardedCall([&] {
    if (Report* report = RecordingReport()) report->OnBufferedTime(seconds);
    RecordNumber("buffered", &PlayTotals::buffered_time, seconds);
  });
}

void StatsPlayer::OnAudioClock(float seconds) {
  GuardedCall([&] {
    if (Report* report = RecordingReport()) report->OnAudioClock(seconds);
    RecordNumber("clock", &PlayTotals::audio_clock, seconds);
  });
}

void StatsPlayer::OnAudioFrame(MediaFrame frame) {
  GuardedCall([&] {
    if (Report* report = RecordingReport()) report->OnAudioFrame(frame);
    RecordFrame(FrameKind::kAudio, audio_, frame);
  });
}

void StatsPlayer::OnVideoFrame(MediaFrame frame) {
  GuardedCall([&] {
    if (Report* report = RecordingReport()) report->OnVideoFrame(frame);
    RecordFrame(FrameKind::kVideo, video_, frame);
  });
}

void StatsPlayer::OnMessage(std::string line) {
  GuardedCall([&] {
    if (report_ != nullptr) report_->OnMessage(line);
    RecordLine("message", &RunRecord::messages, std::move(line));
  });
}

void StatsPlayer::OnPlayResult(std::string line) {
  GuardedCall([&] {
    if (report_ != nullptr) report_->OnPlayResult(line);
    RecordLine("result", &RunRecord::results, std::move(line));
  });
}

void StatsPlayer::OpenRun() {
  if (report_ != nullptr) report_->OpenRun();
  frames_seen_ = 0;
  frames_recorded_ = 0;
  has_expected_line_ = false;
  for (Kind* kind : {&video_, &audio_}) {
    const std::lock_guard lock(kind->mutex);
    kind->totals = {};
    kind->first_frame_ms.reset();
  }
  const std::lock_guard lock(mutex_);
  events_ = {};
}

RunRecord StatsPlayer::Record() const {
  RunRecord record;
  {
    const std::lock_guard lock(mutex_);
    record = events_;
  }
  for (const Kind* kind : {&video_, &audio_}) {
    const std::lock_guard lock(kind->mutex);
    if (!kind->first_frame_ms) continue;
    record.first_frame_ms =
        std::min(record.first_frame_ms.value_or(*kind->first_frame_ms), *kind->first_frame_ms);
  }
  record.totals = Totals();
  return record;
}

PlayTotals StatsPlayer::Totals() const {
  PlayTotals totals;
  {
    const std::lock_guard lock(mutex_);
    totals = events_.totals;
  }
  {
    const std::lock_guard lock(video_.mutex);
    totals.video = video_.totals;
  }
  const std::lock_guard lock(audio_.mutex);
  totals.audio = audio_.totals;
  return totals;
}

Report* StatsPlayer::RecordingReport() const { return recording_.load() ? report_ : nullptr; }

double StatsPlayer::RecordArrival() {
  const double now = clock_.NowMs();
  last_arrival_ms_ = now;
  return now;
}

void StatsPlayer::RecordFrame(FrameKind kind, Kind& state, const MediaFrame& frame) {
  const double now = RecordArrival();
  ++frames_seen_;
  if (!recording_.load()) return;
  ++frames_recorded_;
  {
    const std::lock_guard lock(state.mutex);
    state.totals.Add(frame);
    if (!state.first_frame_ms) state.first_frame_ms = now;
  }
  if (dump_ != nullptr) dump_->WriteFrame(kind, frame, now);
}

void StatsPlayer::RecordNumber(const char* event, std::optional<float> PlayTotals::*newest,
                               float seconds) {
  const double now = RecordArrival();
  if (!recording_.load()) return;
  {
    const std::lock_guard lock(mutex_);
    events_.totals.*newest = seconds;
  }
  if (dump_ != nullptr) dump_->WriteEvent(now, event, ExactText(seconds));
}

void StatsPlayer::RecordLine(const char* event, std::vector<std::string> RunRecord::*texts,
                             std::string&& line) {
  const double now = RecordArrival();
  screen_.Status(now, PrintableText(line));
  if (recording_.load()) {
    if (dump_ != nullptr) dump_->WriteEvent(now, event, line);
    if (!expected_line_.empty() && line.starts_with(expected_line_)) has_expected_line_ = true;
  }
  const std::lock_guard lock(mutex_);
  (events_.*texts).push_back(std::move(line));
}

}  // namespace host
