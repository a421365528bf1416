#include "findings.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <optional>

namespace report {
namespace {

constexpr double kMaxStartDistance = 0.5;  // seconds between the first video and the first audio
constexpr double kMaxEndDistance = 1;      // seconds between the ends of video and audio
constexpr double kMaxDistance = 5;         // seconds between video and audio during the run
constexpr double kMaxLateSeconds = 0.5;
constexpr double kMaxDurationError = 1;    // in seconds, or
constexpr double kDurationErrorPart = 20;  // a twentieth of the duration

using Findings = std::vector<Finding>;

// Never with an exponent, and independent of the locale.
std::string Number(double value, int digits) {
  std::array<char, 352> buffer;
  const auto end = std::to_chars(buffer.data(), buffer.data() + buffer.size(), value,
                                 std::chars_format::fixed, digits);
  return std::string(buffer.data(), end.ptr);
}

std::string Seconds(double seconds) { return Number(seconds, 3) + " s"; }

std::string AtMs(double ms) { return Seconds(ms / kMsPerSecond); }

std::string Count(std::uint64_t count, const std::string& one, const std::string& many) {
  return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string Frames(std::uint64_t count, const std::string& kind) {
  return Count(count, kind + " frame", kind + " frames");
}

void AddPresence(const ReportRecord& record, Findings& findings) {
  const std::uint64_t video = record.video.frames;
  const std::uint64_t audio = record.audio.frames;
  if (video == 0 && audio == 0) {
    findings.push_back(
        {Weight::kOdd, "No frame was received", "Neither video nor audio was delivered."});
  } else if (video == 0) {
    findings.push_back({Weight::kOdd, "Audio without video",
                        Frames(audio, "audio") + " were received and no video frame."});
  } else if (audio == 0) {
    findings.push_back({Weight::kOdd, "Video without audio",
                        Frames(video, "video") + " were received and no audio frame."});
  }
}

std::string WidestText(const Jumps& jumps) {
  const Jump& widest = *jumps.widest;
  return " The widest is " + Seconds(std::abs(widest.Seconds())) + ", before frame " +
         std::to_string(widest.index) + ", which was received after " + AtMs(widest.ms) + ".";
}

void AddJumps(const StepWatch& steps, const std::string& kind, Findings& findings) {
  if (steps.gaps.count > 0) {
    findings.push_back({Weight::kOdd, "Gap in the " + kind,
                        "The " + kind + " time stamps leave out " +
                            Count(steps.gaps.count, "stretch", "stretches") + " of the stream." +
                            WidestText(steps.gaps)});
  }
  if (steps.backs.count > 0) {
    findings.push_back({Weight::kOdd, "Jump back of the " + kind,
                        "The " + kind + " time stamps go back " +
                            Count(steps.backs.count, "time", "times") + "." +
                            WidestText(steps.backs)});
  }
}

void AddPayloads(const FrameWatch& watch, const std::string& kind, Findings& findings) {
  if (watch.empty == 0) return;
  findings.push_back({Weight::kOdd, "Empty " + kind + " frames",
                      Frames(watch.empty, kind) + " were received without a payload."});
}

void AddPlayTimes(const FrameWatch& watch, const std::string& kind, Findings& findings) {
  if (watch.Steps().without_play_time > 0) {
    findings.push_back({Weight::kOdd, "Frames without playTime",
                        Frames(watch.Steps().without_play_time, kind) + " of " +
                            std::to_string(watch.frames) +
                            " have playTime 0 though the stream has gone on."});
  }
  if (watch.play_time_back > 0) {
    findings.push_back(
        {Weight::kNote, "playTime goes back",
         Frames(watch.play_time_back, kind) + " have a smaller playTime than the frame before."});
  }
}

void AddLateness(const StepWatch& steps, const std::string& kind, Findings& findings) {
  if (steps.latest_seconds <= kMaxLateSeconds) return;
  findings.push_back({Weight::kOdd, "Late " + kind,
                      "A player that starts with the first " + kind +
                          " frame would have waited for " + Frames(steps.late_frames, kind) +
                          ", up to " + Seconds(steps.latest_seconds) + " for the one after " +
                          AtMs(steps.latest_at_ms) + "."});
}

// Unless the host paces them, frames arrive as fast as they are parsed, and one kind may be faster
// than the other. A viewer notices the distance only while the player is waiting for the slower
// kind.
void AddDistanceDuringRun(const ReportRecord& record, Findings& findings) {
  const std::optional<Range>& range =
      record.host_paces ? record.distance.range : record.distance_while_waiting;
  if (!range) return;
  const double widest = std::abs(range->low) > range->high ? range->low : range->high;
  if (std::abs(widest) <= kMaxDistance) return;
  findings.push_back({Weight::kNote, "Video and audio drift apart",
                      std::string(widest > 0 ? "Video" : "Audio") + " was up to " +
                          Seconds(std::abs(widest)) +
                          " of stream time ahead while frames were delivered."});
}

void AddDistances(const ReportRecord& record, Findings& findings) {
  if (record.video.frames == 0 || record.audio.frames == 0) return;
  const double start = SecondsBetween(record.video.first_pts, record.audio.first_pts);
  if (std::abs(start) > kMaxStartDistance) {
    findings.push_back({Weight::kOdd, "Video and audio start apart",
                        "The first audio frame is " + Seconds(std::abs(start)) +
                            (start > 0 ? " behind" : " before") +
                            " the first video frame, by their time stamps."});
  }
  const double end =
      SecondsBetween(record.video.Steps().reached_pts, record.audio.Steps().reached_pts);
  if (std::abs(end) > kMaxEndDistance) {
    findings.push_back({Weight::kOdd, "Video and audio end apart",
                        std::string(end > 0 ? "Audio" : "Video") + " goes on for " +
                            Seconds(std::abs(end)) + " after the end of " +
                            (end > 0 ? "video." : "audio.")});
  }
  AddDistanceDuringRun(record, findings);
}

void AddFailureLines(const ReportRecord& record, Findings& findings) {
  for (const FailureLines& lines : record.texts.Failures()) {
    std::string name(lines.beginning);
    while (name.ends_with(' ') || name.ends_with(':')) name.pop_back();
    findings.push_back({Weight::kOdd, "A line reports a failure",
                        "\"" + name + "\" was received " + Count(lines.count, "time", "times") +
                            ", first after " + AtMs(lines.first_ms) + "."});
  }
}

void AddDuration(const ReportRecord& record, Findings& findings) {
  const NumberWatch& duration = record.duration;
  if (!duration.newest || record.video.frames == 0) return;
  const double span = SecondsBetween(record.video.least_pts, record.video.most_pts);
  const double error = std::abs(*duration.newest - span);
  if (error <= std::max(kMaxDurationError, *duration.newest / kDurationErrorPart)) return;
  findings.push_back({Weight::kNote, "Duration and video differ",
                      "The last reported duration is " + Seconds(*duration.newest) +
                          ", the received video spans " + Seconds(span) + "."});
}

void AddNumber(const NumberWatch& number, Weight weight, const std::string& name,
               Findings& findings) {
  if (number.went_back > 0) {
    findings.push_back({weight, "The " + name + " goes back",
                        "It became smaller " + Count(number.went_back, "time", "times") +
                            ", first after " + AtMs(number.went_back_at_ms) + "."});
  }
  if (number.not_finite > 0) {
    findings.push_back({Weight::kOdd, "The " + name + " is no number",
                        Count(number.not_finite, "time", "times") +
                            " it was reported as infinite or as no number at all."});
  }
}

void AddKind(const FrameWatch& watch, const std::string& kind, bool host_paces,
             Findings& findings) {
  AddJumps(watch.Steps(), kind, findings);
  AddPayloads(watch, kind, findings);
  AddPlayTimes(watch, kind, findings);
  if (!host_paces) AddLateness(watch.Steps(), kind, findings);
}

}  // namespace

std::vector<Finding> FindingsOf(const ReportRecord& record) {
  Findings findings;
  AddPresence(record, findings);
  AddFailureLines(record, findings);
  AddKind(record.video, "video", record.host_paces, findings);
  AddKind(record.audio, "audio", record.host_paces, findings);
  AddDistances(record, findings);
  AddDuration(record, findings);
  AddNumber(record.duration, Weight::kNote, "duration", findings);
  AddNumber(record.buffered_time, Weight::kNote, "buffered time", findings);
  AddNumber(record.audio_clock, Weight::kOdd, "audio clock", findings);
  std::stable_partition(findings.begin(), findings.end(),
                        [](const Finding& finding) { return finding.weight == Weight::kOdd; });
  return findings;
}

}  // namespace report
