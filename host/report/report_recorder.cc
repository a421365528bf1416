#include "report_recorder.h"

#include <utility>

#include "points.h"

namespace report {

ReportRecorder::ReportRecorder(std::function<double()> now_ms, bool host_paces)
    : now_ms_(std::move(now_ms)), start_ms_(now_ms_()) {
  record_.host_paces = host_paces;
}

// The time is read under the lock, so that entries are in order of time.

void ReportRecorder::Video(const MediaFrame& frame) {
  const std::lock_guard lock(mutex_);
  record_.AddVideo(NowMs(), frame);
}

void ReportRecorder::Audio(const MediaFrame& frame) {
  const std::lock_guard lock(mutex_);
  record_.AddAudio(NowMs(), frame);
}

void ReportRecorder::AudioClock(float seconds) {
  const std::lock_guard lock(mutex_);
  record_.audio_clock.Add(NowMs(), seconds);
}

void ReportRecorder::Duration(float seconds) {
  const std::lock_guard lock(mutex_);
  record_.duration.Add(NowMs(), seconds);
}

void ReportRecorder::BufferedTime(float seconds) {
  const std::lock_guard lock(mutex_);
  record_.buffered_time.Add(NowMs(), seconds);
}

void ReportRecorder::Message(const std::string& line) {
  const std::lock_guard lock(mutex_);
  record_.texts.Add(NowMs(), TextKind::kMessage, line);
}

void ReportRecorder::PlayResult(const std::string& line) {
  const std::lock_guard lock(mutex_);
  record_.texts.Add(NowMs(), TextKind::kResult, line);
}

void ReportRecorder::Restart() {
  const std::lock_guard lock(mutex_);
  const bool host_paces = record_.host_paces;
  record_ = {};
  record_.host_paces = host_paces;
  start_ms_ = now_ms_();
}

ReportRecord ReportRecorder::Snapshot() const {
  const std::lock_guard lock(mutex_);
  ReportRecord record = record_;
  record.elapsed_ms = NowMs();
  return record;
}

}  // namespace report
