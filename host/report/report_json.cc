#include "report_json.h"

#include <cmath>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

#include "findings.h"

namespace report {
namespace {

using Json = nlohmann::ordered_json;

// More precise than any chart or table shows, and short in the file.
double Rounded(double seconds) { return std::round(seconds * 1e5) / 1e5; }

double SecondsOfMs(double ms) { return Rounded(ms / kMsPerSecond); }

double SecondsOfTicks(std::uint64_t ticks) {
  return Rounded(static_cast<double>(ticks) / kTicksPerSecond);
}

Json OrNull(const std::optional<double>& seconds) {
  return seconds ? Json(Rounded(*seconds)) : Json(nullptr);
}

// One column of a table of points: `value` of each point.
template <typename Points, typename Value>
Json Column(const Points& points, const Value& value) {
  Json column = Json::array();
  for (const auto& point : points) column.push_back(value(point));
  return column;
}

Json FramePointsJson(const BoundedSeries<FramePoint>& series, bool has_valid_dts) {
  const auto& points = series.Points();
  using P = FramePoint;
  const auto step = [has_valid_dts](const P& point, double Range::*end) {
    const std::optional<Range>& steps = has_valid_dts ? point.dts_steps : point.pts_steps;
    return steps ? Json(Rounded(*steps.*end)) : Json(nullptr);
  };
  return {{"per_point", series.PerPoint()},
          {"t", Column(points, [](const P& p) { return SecondsOfMs(p.ms); })},
          {"pts", Column(points, [](const P& p) { return SecondsOfTicks(p.pts); })},
          {"frames", Column(points, [](const P& p) { return p.frames; })},
          {"bytes", Column(points, [](const P& p) { return p.bytes; })},
          {"largest", Column(points, [](const P& p) { return p.largest; })},
          {"step_low", Column(points, [&](const P& p) { return step(p, &Range::low); })},
          {"step_high", Column(points, [&](const P& p) { return step(p, &Range::high); })}};
}

Json NumberJson(const NumberWatch& number) {
  const auto& points = number.points.Points();
  using P = NumberPoint;
  return {{"count", number.count},
          {"not_finite", number.not_finite},
          {"went_back", number.went_back},
          {"first", OrNull(number.first)},
          {"newest", OrNull(number.newest)},
          {"low", OrNull(number.range ? std::optional(number.range->low) : std::nullopt)},
          {"high", OrNull(number.range ? std::optional(number.range->high) : std::nullopt)},
          {"newest_at", SecondsOfMs(number.newest_ms)},
          {"points",
           {{"per_point", number.points.PerPoint()},
            {"t", Column(points, [](const P& p) { return SecondsOfMs(p.ms); })},
            {"newest", Column(points, [](const P& p) { return Rounded(p.newest); })},
            {"low", Column(points, [](const P& p) { return Rounded(p.range.low); })},
            {"high", Column(points, [](const P& p) { return Rounded(p.range.high); })}}}};
}

void AddJumpRows(const Jumps& jumps, const char* kind, const char* what, Json& rows) {
  for (const Jump& jump : jumps.listed) {
    rows.push_back({{"kind", kind},
                    {"what", what},
                    {"t", SecondsOfMs(jump.ms)},
                    {"index", jump.index},
                    {"from", SecondsOfTicks(jump.from)},
                    {"to", SecondsOfTicks(jump.to)},
                    {"seconds", Rounded(jump.Seconds())}});
  }
}

Json JumpsJson(const ReportRecord& record) {
  Json rows = Json::array();
  const StepWatch& video = record.video.Steps();
  const StepWatch& audio = record.audio.Steps();
  AddJumpRows(video.gaps, "video", "gap", rows);
  AddJumpRows(video.backs, "video", "jump back", rows);
  AddJumpRows(audio.gaps, "audio", "gap", rows);
  AddJumpRows(audio.backs, "audio", "jump back", rows);
  const std::uint64_t count =
      video.gaps.count + video.backs.count + audio.gaps.count + audio.backs.count;
  return {{"count", count}, {"listed", std::move(rows)}};
}

Json FramesJson(const FrameWatch& watch) {
  const StepWatch& steps = watch.Steps();
  return {{"frames", watch.frames},
          {"bytes", watch.bytes},
          {"smallest", watch.smallest},
          {"largest", watch.largest},
          {"empty", watch.empty},
          {"gaps", steps.gaps.count},
          {"backs", steps.backs.count},
          {"same_time", steps.same_time},
          {"without_play_time", steps.without_play_time},
          {"play_time_back", watch.play_time_back},
          {"first_at", SecondsOfMs(watch.first_ms)},
          {"last_at", SecondsOfMs(watch.last_ms)},
          {"longest_silence", SecondsOfMs(watch.longest_silence_ms)},
          {"first_pts", SecondsOfTicks(watch.least_pts)},
          {"last_pts", SecondsOfTicks(watch.most_pts)},
          {"span", Rounded(SecondsBetween(watch.least_pts, watch.most_pts))},
          {"latest", Rounded(steps.latest_seconds)},
          {"late_frames", steps.late_frames},
          {"points", FramePointsJson(watch.points, watch.HasValidDts())}};
}

Json FindingsJson(const ReportRecord& record) {
  Json rows = Json::array();
  for (const Finding& finding : FindingsOf(record)) {
    rows.push_back({{"odd", finding.weight == Weight::kOdd},
                    {"title", finding.title},
                    {"sentence", finding.sentence}});
  }
  return rows;
}

Json TextsJson(const TextLog& texts) {
  Json rows = Json::array();
  for (const TimedText& text : texts.Kept()) {
    rows.push_back({{"t", SecondsOfMs(text.ms)},
                    {"kind", text.kind == TextKind::kMessage ? "message" : "result"},
                    {"text", text.text}});
  }
  return {{"messages", texts.Count(TextKind::kMessage)},
          {"results", texts.Count(TextKind::kResult)},
          {"dropped", texts.Dropped()},
          {"kept", std::move(rows)}};
}

// JSON contains "<" inside strings only, so escaping it keeps the document valid.
std::string WithoutLessThan(const std::string& json) {
  std::string text;
  text.reserve(json.size());
  for (const char c : json) {
    if (c == '<') {
      text += "\\u003c";
    } else {
      text += c;
    }
  }
  return text;
}

}  // namespace

std::string ReportJson(const ReportRecord& record, const std::string& address) {
  const Json json = {{"address", address},
                     {"elapsed", SecondsOfMs(record.elapsed_ms)},
                     {"findings", FindingsJson(record)},
                     {"video", FramesJson(record.video)},
                     {"audio", FramesJson(record.audio)},
                     {"distance", NumberJson(record.distance)},
                     {"duration", NumberJson(record.duration)},
                     {"buffered_time", NumberJson(record.buffered_time)},
                     {"audio_clock", NumberJson(record.audio_clock)},
                     {"jumps", JumpsJson(record)},
                     {"texts", TextsJson(record.texts)}};
  constexpr bool kAsciiOnly = true;
  return WithoutLessThan(json.dump(-1, ' ', kAsciiOnly, Json::error_handler_t::replace));
}

}  // namespace report
