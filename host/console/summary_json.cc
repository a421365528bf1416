#include <cmath>
#include <nlohmann/json.hpp>

#include "summary.h"

namespace host {
namespace {

using Json = nlohmann::ordered_json;

// Microsecond precision is enough for these times.
double Rounded(double milliseconds) { return std::round(milliseconds * 1000) / 1000; }

template <typename Value>
Json OrNull(const std::optional<Value>& value) {
  return value ? Json(*value) : Json(nullptr);
}

Json MsOrNull(const std::optional<double>& milliseconds) {
  return milliseconds ? Json(Rounded(*milliseconds)) : Json(nullptr);
}

Json KindJson(const KindTotals& totals) {
  return {{"frames", totals.frames},
          {"bytes", totals.bytes},
          {"first_pts", OrNull(totals.FirstSeconds())},
          {"last_pts", OrNull(totals.LastSeconds())},
          {"span", OrNull(totals.SpanSeconds())}};
}

void AddTotals(Json& json, const PlayTotals& totals) {
  json["video"] = KindJson(totals.video);
  json["audio"] = KindJson(totals.audio);
  json["duration"] = OrNull(totals.duration);
  json["buffered_time"] = OrNull(totals.buffered_time);
  json["audio_clock"] = OrNull(totals.audio_clock);
}

Json StopJson(const RunReport& run) {
  Json stops = Json::array();
  for (const double ms : run.stop_ms) stops.push_back(Rounded(ms));
  return stops;
}

Json RunJson(const RunReport& run) {
  Json json;
  json["exit_reason"] = NameOf(run.reason);
  AddTotals(json, run.record.totals);
  json["time_to_first_frame_ms"] = MsOrNull(run.time_to_first_frame_ms);
  json["stop_ms"] = StopJson(run);
  json["elapsed_ms"] = Rounded(run.elapsed_ms);
  return json;
}

template <typename List>
void Append(Json& array, const List& list) {
  for (const auto& item : list) array.push_back(item);
}

}  // namespace

std::string SummaryJson(const Summary& summary) {
  Json json;
  json["address"] = summary.options.address;
  json["exit_status"] = static_cast<int>(ExitStatusOf(summary));
  json["exit_reason"] = NameOf(summary.runs.back().reason);
  AddTotals(json, SumOf(summary.runs));
  json["time_to_first_frame_ms"] = MsOrNull(TimeToFirstFrame(summary.runs));
  for (const char* list : {"messages", "results", "stop_ms", "runs"}) json[list] = Json::array();
  for (const RunReport& run : summary.runs) {
    Append(json["messages"], run.record.messages);
    Append(json["results"], run.record.results);
    Append(json["stop_ms"], StopJson(run));
    json["runs"].push_back(RunJson(run));
  }
  json["elapsed_ms"] = Rounded(summary.elapsed_ms);
  json["dump_complete"] = OrNull(summary.dump_complete);
  return json.dump(-1, ' ', true, Json::error_handler_t::replace);
}

}  // namespace host
