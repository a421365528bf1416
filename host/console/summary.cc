#include "summary.h"

#include "text.h"

namespace host {
namespace {

std::string SecondsText(double seconds) { return FixedText(seconds, 3) + " s"; }

std::string MsText(double milliseconds) { return FixedText(milliseconds, 1) + " ms"; }

std::string OrNone(const std::optional<float>& seconds) {
  return seconds ? SecondsText(*seconds) : "none";
}

std::string FramesText(const KindTotals& totals) {
  std::string text =
      std::to_string(totals.frames) + " frames, " + std::to_string(totals.bytes) + " bytes";
  if (totals.SpanSeconds()) {
    text += ", " + SecondsText(*totals.FirstSeconds()) + " to " +
            SecondsText(*totals.LastSeconds()) + " (" + SecondsText(*totals.SpanSeconds()) + ")";
  }
  return text;
}

std::string StopText(const std::vector<RunReport>& runs) {
  std::string text;
  for (const RunReport& run : runs) {
    for (const double ms : run.stop_ms) {
      if (!text.empty()) text += ", ";
      text += MsText(ms);
    }
  }
  return text;
}

std::string EndText(EndReason reason, const Options& options) {
  switch (reason) {
    case EndReason::kExpected:
      return "what was expected has been received";
    case EndReason::kIdle:
      return "nothing was received for " + SecondsText(options.idle_exit_seconds);
    case EndReason::kStopAfter:
      return "stopped after " + SecondsText(options.stop_after_seconds.value_or(0));
    case EndReason::kInterrupted:
      return "interrupted";
    case EndReason::kRefused:
      return "the address was refused";
  }
  return "";
}

void AddResultLines(const std::vector<RunReport>& runs, std::vector<std::string>& lines) {
  const std::size_t before = lines.size();
  for (const RunReport& run : runs) {
    for (const std::string& result : run.record.results) {
      lines.push_back("  result: " + PrintableText(result));
    }
  }
  if (lines.size() == before) lines.emplace_back("  results: none");
}

void AddRunLines(const Summary& summary, std::vector<std::string>& lines) {
  for (std::size_t run = 0; run < summary.runs.size(); ++run) {
    const RunReport& report = summary.runs[run];
    lines.push_back("  run " + std::to_string(run) + ": " +
                    std::to_string(report.record.totals.video.frames) + " video and " +
                    std::to_string(report.record.totals.audio.frames) + " audio frames, " +
                    EndText(report.reason, summary.options));
  }
}

}  // namespace

PlayTotals SumOf(const std::vector<RunReport>& runs) {
  PlayTotals sum;
  for (const RunReport& run : runs) sum.Add(run.record.totals);
  return sum;
}

std::optional<double> TimeToFirstFrame(const std::vector<RunReport>& runs) {
  for (const RunReport& run : runs) {
    if (run.time_to_first_frame_ms) return run.time_to_first_frame_ms;
  }
  return std::nullopt;
}

ExitStatus ExitStatusOf(const Summary& summary) {
  return SumOf(summary.runs).Frames() > 0 ? kExitFrames : kExitNoFrames;
}

std::string ExitLine(const Summary& summary) {
  const PlayTotals sum = SumOf(summary.runs);
  const ExitStatus status = ExitStatusOf(summary);
  const std::string received = status == kExitNoFrames
                                   ? "no frame was received"
                                   : std::to_string(sum.video.frames) + " video and " +
                                         std::to_string(sum.audio.frames) +
                                         " audio frames were received";
  return "exit status " + std::to_string(status) + ": " + received + "; " +
         EndText(summary.runs.back().reason, summary.options);
}

std::vector<std::string> SummaryLines(const Summary& summary) {
  const PlayTotals sum = SumOf(summary.runs);
  const std::optional<double> first = TimeToFirstFrame(summary.runs);
  std::vector<std::string> lines = {
      "summary of " + PrintableText(summary.options.address),
      "  video: " + FramesText(sum.video),
      "  audio: " + FramesText(sum.audio),
      "  duration: " + OrNone(sum.duration) + ", buffered: " + OrNone(sum.buffered_time) +
          ", audio clock: " + OrNone(sum.audio_clock),
      "  time to the first frame: " + (first ? MsText(*first) : "none"),
  };
  AddResultLines(summary.runs, lines);
  if (summary.runs.size() > 1) AddRunLines(summary, lines);
  lines.push_back("  EndDownload took: " + StopText(summary.runs));
  lines.push_back("  elapsed: " + SecondsText(summary.elapsed_ms / 1000));
  return lines;
}

}  // namespace host
