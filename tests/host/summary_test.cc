#include "host/console/summary.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tests/host/host_support.h"

namespace host {
namespace {

using testing::Contains;
using testing::HasSubstr;

// A run with two video frames at 1 s and 3 s and an audio frame at 2 s.
RunReport SomeRun() {
  RunReport run;
  run.record.totals.video.Add(FrameOf(270'000, "1234"));
  run.record.totals.video.Add(FrameOf(90'000, "12"));
  run.record.totals.audio.Add(FrameOf(180'000, "123"));
  run.record.totals.duration = 2.5F;
  run.record.totals.audio_clock = 2.0F;
  run.record.messages = {"PLAY TS:a.ts"};
  run.record.results = {"PLAY:TS OK:a.ts"};
  run.reason = EndReason::kIdle;
  run.elapsed_ms = 3500;
  run.time_to_first_frame_ms = 12.34567;
  run.stop_ms = {4.5};
  return run;
}

Summary SummaryOf(std::vector<RunReport> runs) {
  Summary summary;
  summary.options.address = "http://h/a.ts";
  summary.runs = std::move(runs);
  summary.elapsed_ms = 3600;
  return summary;
}

nlohmann::json JsonOf(const Summary& summary) {
  return nlohmann::json::parse(SummaryJson(summary));
}

TEST(SummaryTest, JsonHoldsTheTotalsOfOneRun) {
  const nlohmann::json json = JsonOf(SummaryOf({SomeRun()}));
  EXPECT_EQ(json["address"], "http://h/a.ts");
  EXPECT_EQ(json["exit_status"], 0);
  EXPECT_EQ(json["exit_reason"], "idle");
  EXPECT_EQ(json["video"], nlohmann::json::parse(R"({"frames": 2, "bytes": 6, "first_pts": 1.0,
                                                     "last_pts": 3.0, "span": 2.0})"));
  EXPECT_EQ(json["audio"], nlohmann::json::parse(R"({"frames": 1, "bytes": 3, "first_pts": 2.0,
                                                     "last_pts": 2.0, "span": 0.0})"));
  EXPECT_EQ(json["duration"], 2.5);
  EXPECT_EQ(json["buffered_time"], nullptr);
  EXPECT_EQ(json["audio_clock"], 2.0);
  EXPECT_EQ(json["time_to_first_frame_ms"], 12.346);
  EXPECT_EQ(json["messages"], nlohmann::json({"PLAY TS:a.ts"}));
  EXPECT_EQ(json["results"], nlohmann::json({"PLAY:TS OK:a.ts"}));
  EXPECT_EQ(json["stop_ms"], nlohmann::json({4.5}));
  EXPECT_EQ(json["runs"].size(), 1U);
  EXPECT_EQ(json["elapsed_ms"], 3600.0);
  EXPECT_EQ(json["dump_complete"], nullptr);
}

TEST(SummaryTest, JsonHoldsEachRunAndTheirTotals) {
  RunReport second;
  second.record.totals.video.Add(FrameOf(900'000, "1"));
  second.reason = EndReason::kStopAfter;
  second.stop_ms = {1, 2};
  const nlohmann::json json = JsonOf(SummaryOf({SomeRun(), second}));
  EXPECT_EQ(json["video"]["frames"], 3);
  EXPECT_EQ(json["video"]["last_pts"], 10.0);
  EXPECT_EQ(json["exit_reason"], "stop-after");
  EXPECT_EQ(json["duration"], 2.5) << "a run without a duration does not clear it";
  EXPECT_EQ(json["stop_ms"], nlohmann::json({4.5, 1.0, 2.0}));
  ASSERT_EQ(json["runs"].size(), 2U);
  EXPECT_EQ(json["runs"][0]["exit_reason"], "idle");
  EXPECT_EQ(json["runs"][1]["video"]["frames"], 1);
  EXPECT_EQ(json["runs"][1]["time_to_first_frame_ms"], nullptr);
  EXPECT_EQ(json["runs"][1]["stop_ms"], nlohmann::json({1.0, 2.0}));
}

TEST(SummaryTest, JsonOfARunWithoutFramesHasNulls) {
  const nlohmann::json json = JsonOf(SummaryOf({RunReport()}));
  EXPECT_EQ(json["exit_status"], 1);
  EXPECT_EQ(json["video"]["frames"], 0);
  EXPECT_EQ(json["video"]["first_pts"], nullptr);
  EXPECT_EQ(json["time_to_first_frame_ms"], nullptr);
  EXPECT_EQ(json["messages"], nlohmann::json::array());
}

TEST(SummaryTest, JsonOfBytesThatAreNotUtf8IsOneLineOfAscii) {
  RunReport run = SomeRun();
  run.record.messages = {std::string("PLAY TS NO:\xff\xc3\n\0\x1b", 16), "\xe2\x80\xa8"};
  Summary summary = SummaryOf({run});
  summary.options.address = "file:///\xe4.ts";
  const std::string text = SummaryJson(summary);
  EXPECT_TRUE(std::all_of(text.begin(), text.end(), [](char c) { return c >= 0x20 && c < 0x7f; }))
      << text;
  const nlohmann::json json = nlohmann::json::parse(text);
  EXPECT_EQ(json["messages"][0], std::string("PLAY TS NO:\xef\xbf\xbd\xef\xbf\xbd\n\0\x1b", 20));
  EXPECT_EQ(json["messages"][1], "\xe2\x80\xa8");
  EXPECT_EQ(json["address"], "file:///\xef\xbf\xbd.ts");
}

TEST(SummaryTest, IncompleteDumpIsReportedInJson) {
  Summary summary = SummaryOf({SomeRun()});
  summary.dump_complete = false;
  EXPECT_EQ(JsonOf(summary)["dump_complete"], false);
}

TEST(SummaryTest, FrameOfAnyRunGivesStatusZero) {
  const Summary summary = SummaryOf({SomeRun(), RunReport()});
  EXPECT_EQ(ExitStatusOf(summary), 0);
  EXPECT_EQ(
      ExitLine(summary),
      "exit status 0: 2 video and 1 audio frames were received; nothing was received for 3.000 s");
}

TEST(SummaryTest, NoFrameGivesStatusOneAndTheReason) {
  RunReport run;
  run.reason = EndReason::kInterrupted;
  EXPECT_EQ(ExitStatusOf(SummaryOf({run})), 1);
  EXPECT_EQ(ExitLine(SummaryOf({run})), "exit status 1: no frame was received; interrupted");
  run.reason = EndReason::kRefused;
  EXPECT_EQ(ExitLine(SummaryOf({run})),
            "exit status 1: no frame was received; the address was refused");
}

TEST(SummaryTest, RunThatReceivedTheExpectedIsReportedInTheExitLine) {
  RunReport run = SomeRun();
  run.reason = EndReason::kExpected;
  EXPECT_EQ(ExitLine(SummaryOf({run})),
            "exit status 0: 2 video and 1 audio frames were received; what was expected has been "
            "received");
  EXPECT_EQ(JsonOf(SummaryOf({run}))["exit_reason"], "expected");
}

TEST(SummaryTest, StopAfterIsReportedInTheExitLine) {
  RunReport run = SomeRun();
  run.reason = EndReason::kStopAfter;
  Summary summary = SummaryOf({run});
  summary.options.stop_after_seconds = 1.5;
  EXPECT_THAT(ExitLine(summary), HasSubstr("stopped after 1.500 s"));
}

TEST(SummaryTest, LinesHoldTheSameAsTheJson) {
  const std::vector<std::string> lines = SummaryLines(SummaryOf({SomeRun()}));
  EXPECT_THAT(lines, Contains("summary of http://h/a.ts"));
  EXPECT_THAT(lines, Contains("  video: 2 frames, 6 bytes, 1.000 s to 3.000 s (2.000 s)"));
  EXPECT_THAT(lines, Contains("  audio: 1 frames, 3 bytes, 2.000 s to 2.000 s (0.000 s)"));
  EXPECT_THAT(lines, Contains("  duration: 2.500 s, buffered: none, audio clock: 2.000 s"));
  EXPECT_THAT(lines, Contains("  time to the first frame: 12.3 ms"));
  EXPECT_THAT(lines, Contains("  result: PLAY:TS OK:a.ts"));
  EXPECT_THAT(lines, Contains("  EndDownload took: 4.5 ms"));
}

TEST(SummaryTest, LinesOfSeveralRunsListEachOfThem) {
  const std::vector<std::string> lines = SummaryLines(SummaryOf({SomeRun(), RunReport()}));
  EXPECT_THAT(lines,
              Contains("  run 0: 2 video and 1 audio frames, nothing was received for 3.000 s"));
  EXPECT_THAT(lines,
              Contains("  run 1: 0 video and 0 audio frames, nothing was received for 3.000 s"));
}

}  // namespace
}  // namespace host
