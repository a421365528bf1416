#include "play_run.h"

#include <algorithm>
#include <utility>

#include "progress.h"
#include "text.h"

namespace host {
namespace {

constexpr double kMsPerSecond = 1000;

EndRule RuleOf(const Options& options) {
  EndRule rule{options.idle_exit_seconds * kMsPerSecond, std::nullopt};
  if (options.stop_after_seconds) rule.stop_after_ms = *options.stop_after_seconds * kMsPerSecond;
  return rule;
}

}  // namespace

PlayRunner::PlayRunner(const Options& options, const Dependencies& dependencies)
    : options_(options), rule_(RuleOf(options)), dependencies_(dependencies) {
  dependencies_.player.ExpectLine(options_.expected_line);
}

std::vector<RunReport> PlayRunner::PlayAll() {
  std::vector<RunReport> reports;
  for (int run = 0; run <= options_.repeat; ++run) {
    if (run > 0)
      dependencies_.screen.Status(dependencies_.clock.NowMs(), "repeat " + std::to_string(run));
    run_ = static_cast<std::size_t>(run);
    reports.push_back(PlayOnce());
    if (reports.back().reason == EndReason::kInterrupted) break;
  }
  return reports;
}

RunReport PlayRunner::PlayOnce() {
  dependencies_.player.OpenRun();
  stop_ms_.clear();
  run_began_ms_ = dependencies_.clock.NowMs();
  expected_since_ms_.reset();

  std::optional<EndReason> reason;
  if (options_.start_seconds && !has_pipeline_) reason = PlayToFirstFrame();
  if (!reason) reason = PlayToEnd();

  RunReport report;
  report.record = dependencies_.player.Record();
  report.reason = *reason;
  report.elapsed_ms = dependencies_.clock.NowMs() - run_began_ms_;
  if (report.record.first_frame_ms) {
    report.time_to_first_frame_ms = *report.record.first_frame_ms - download_began_ms_;
  }
  report.stop_ms = stop_ms_;
  return report;
}

std::optional<EndReason> PlayRunner::PlayToFirstFrame() {
  dependencies_.player.SetRecording(false);
  std::optional<EndReason> reason = EndReason::kRefused;
  if (Begin()) reason = WaitUntil([this] { return dependencies_.player.FramesSeen() > 0; });
  End();
  dependencies_.player.SetRecording(true);
  has_pipeline_ = !reason;
  return reason;
}

EndReason PlayRunner::PlayToEnd() {
  if (options_.start_seconds) SetStart();
  std::optional<EndReason> reason = EndReason::kRefused;
  if (Begin()) reason = WaitUntil([] { return false; });
  End();
  return *reason;
}

bool PlayRunner::HasExpected() const {
  const std::vector<std::uint64_t>& frames = options_.expected_frames;
  if (frames.empty()) return dependencies_.player.HasExpectedLine();
  return dependencies_.player.HasExpectedLine() ||
         dependencies_.player.FramesRecorded() >= frames[std::min(run_, frames.size() - 1)];
}

bool PlayRunner::Begin() {
  download_began_ms_ = dependencies_.clock.NowMs();
  return dependencies_.downloader.Begin(options_.address);
}

void PlayRunner::End() {
  const double before = dependencies_.clock.NowMs();
  dependencies_.downloader.End();
  const double after = dependencies_.clock.NowMs();
  stop_ms_.push_back(after - before);
  dependencies_.screen.Status(after, "EndDownload took " + FixedText(stop_ms_.back(), 1) + " ms");
}

void PlayRunner::SetStart() {
  const auto seconds = static_cast<float>(*options_.start_seconds);
  if (!dependencies_.downloader.SetStart(seconds)) {
    dependencies_.screen.Status(dependencies_.clock.NowMs(), "the start position was refused");
  }
}

std::optional<EndReason> PlayRunner::WaitUntil(const std::function<bool()>& met) {
  ProgressLine progress(dependencies_.screen);
  while (!met()) {
    const double now = dependencies_.clock.NowMs();
    if (!expected_since_ms_ && HasExpected()) expected_since_ms_ = now;
    const double last = std::max(dependencies_.player.LastArrivalMs(), download_began_ms_);
    const auto reason = ReasonToEnd(
        rule_, {now, run_began_ms_, last, dependencies_.interrupted(), expected_since_ms_});
    if (reason) return reason;
    if (progress.IsDue(now)) progress.Draw(now, dependencies_.player.Totals());
    dependencies_.clock.Pause();
  }
  return std::nullopt;
}

}  // namespace host
