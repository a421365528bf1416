#include "host/console/play_run.h"

#include <gmock/gmock.h>

#include <functional>
#include <map>

#include "tests/host/host_support.h"
#include "tests/host/simulated_clock.h"

namespace host {
namespace {

using testing::ElementsAre;

// Records the calls, and delivers frames at given times after each Begin.
class FakeDownloader final : public Downloader, public SimulatedClock {
 public:
  bool Begin(const std::string& address) override {
    calls.push_back("begin " + address);
    began_ms_ = NowMs();
    playing_ = true;
    return !refuses;
  }
  bool End() override {
    calls.emplace_back("end");
    playing_ = false;
    if (player != nullptr && on_end) on_end(*player);
    Advance(end_takes_ms);
    return true;
  }
  bool SetStart(float seconds) override {
    calls.push_back("start " + std::to_string(static_cast<int>(seconds)));
    return true;
  }
  void Pause() override {
    SimulatedClock::Pause();
    if (!playing_) return;
    for (const auto& [at_ms, event] : events) {
      const double passed = NowMs() - began_ms_;
      if (passed >= at_ms && passed - 10 < at_ms) event(*player);
    }
  }

  CStreamPlayerImp* player = nullptr;
  bool refuses = false;
  double end_takes_ms = 7;
  std::function<void(CStreamPlayerImp&)> on_end;
  std::multimap<double, std::function<void(CStreamPlayerImp&)>> events;  // ms after Begin
  std::vector<std::string> calls;

 private:
  double began_ms_ = 0;
  bool playing_ = false;
};

void SendVideo(CStreamPlayerImp& player) { player.OnVideoFrame(FrameOf(90'000, "v")); }
void SendAudio(CStreamPlayerImp& player) { player.OnAudioFrame(FrameOf(90'000, "a")); }

class PlayRunTest : public testing::Test {
 protected:
  PlayRunTest() : screen_(output_.get(), {}), player_(library_, screen_, nullptr) {
    library_.player = &player_;
    options_.address = "a.ts";
  }

  std::vector<RunReport> Play() {
    return PlayRunner(options_, {library_, player_, library_, screen_,
                                 [this] { return library_.NowMs() >= interrupted_at_ms_; }})
        .PlayAll();
  }

  Options options_;
  OutputFile output_;
  Screen screen_;
  FakeDownloader library_;
  StatsPlayer player_;
  double interrupted_at_ms_ = 1e12;
};

TEST_F(PlayRunTest, SilentAddressEndsAfterTheIdleTime) {
  options_.idle_exit_seconds = 0.5;
  const std::vector<RunReport> reports = Play();
  EXPECT_THAT(library_.calls, ElementsAre("begin a.ts", "end"));
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].reason, EndReason::kIdle);
  EXPECT_EQ(reports[0].elapsed_ms, 507);
  EXPECT_THAT(reports[0].stop_ms, ElementsAre(7.0));
  EXPECT_EQ(reports[0].time_to_first_frame_ms, std::nullopt);
}

TEST_F(PlayRunTest, EveryArrivalRestartsTheIdleTime) {
  options_.idle_exit_seconds = 0.5;
  library_.events = {{400, SendVideo},
                     {800, [](CStreamPlayerImp& player) { player.OnDuration(1); }},
                     {1200, [](CStreamPlayerImp& player) { player.OnMessage("m"); }}};
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].elapsed_ms, 1707);
  EXPECT_EQ(reports[0].time_to_first_frame_ms, 400.0);
}

TEST_F(PlayRunTest, StopAfterEndsARunThatStillReceivesFrames) {
  options_.stop_after_seconds = 1;
  for (int ms = 0; ms < 5000; ms += 100) library_.events.emplace(ms, SendVideo);
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].reason, EndReason::kStopAfter);
  EXPECT_EQ(reports[0].elapsed_ms, 1007);
}

TEST_F(PlayRunTest, ExpectedFramesOfBothKindsEndTheRun) {
  options_.expected_frames = {3};
  library_.events = {{100, SendVideo}, {200, SendAudio}, {300, SendVideo}};
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].reason, EndReason::kExpected);
  EXPECT_EQ(reports[0].elapsed_ms, 300 + kSettleMs + 7);
}

TEST_F(PlayRunTest, FramesAfterTheExpectedOnesAreReceivedAndCountedForAMoment) {
  options_.expected_frames = {1};
  for (int ms = 100; ms < 5000; ms += 100) library_.events.emplace(ms, SendVideo);
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].reason, EndReason::kExpected);
  EXPECT_EQ(reports[0].record.totals.Frames(), 3U);
  EXPECT_EQ(reports[0].elapsed_ms, 100 + kSettleMs + 7);
}

TEST_F(PlayRunTest, RunWithOneFrameTooFewEndsAfterTheIdleTime) {
  options_.expected_frames = {3};
  options_.idle_exit_seconds = 0.5;
  library_.events = {{100, SendVideo}, {200, SendAudio}};
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].reason, EndReason::kIdle);
  EXPECT_EQ(reports[0].elapsed_ms, 200 + 500 + 7);
}

TEST_F(PlayRunTest, MessageThatBeginsAsExpectedEndsTheRun) {
  options_.expected_line = "PLAY TS NO:";
  library_.events = {{100, [](CStreamPlayerImp& player) { player.OnMessage("PLAY TS:a"); }},
                     {700, [](CStreamPlayerImp& player) { player.OnMessage("PLAY TS NO:a"); }}};
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].reason, EndReason::kExpected);
  EXPECT_EQ(reports[0].elapsed_ms, 700 + kSettleMs + 7);
}

TEST_F(PlayRunTest, ResultThatBeginsAsExpectedEndsTheRun) {
  options_.expected_line = "PLAY:MP4 ";
  library_.events = {{100, [](CStreamPlayerImp& player) { player.OnPlayResult("PLAY:MP4 OK:a"); }}};
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].reason, EndReason::kExpected);
}

TEST_F(PlayRunTest, LineThatDoesNotBeginWithTheExpectedTextDoesNotEndTheRun) {
  options_.expected_line = "PLAY TS";
  options_.idle_exit_seconds = 0.5;
  library_.events = {{100, [](CStreamPlayerImp& player) { player.OnMessage("a PLAY TS"); }}};
  EXPECT_EQ(Play()[0].reason, EndReason::kIdle);
}

TEST_F(PlayRunTest, EarlierOfFramesAndLineEndsTheRunIfBothAreExpected) {
  options_.expected_frames = {1};
  options_.expected_line = "m";
  const auto line = [](CStreamPlayerImp& player) { player.OnMessage("m"); };
  library_.events = {{100, SendVideo}, {900, line}};
  EXPECT_EQ(Play()[0].elapsed_ms, 100 + kSettleMs + 7);
  library_.events = {{150, line}, {900, SendVideo}};
  EXPECT_EQ(Play()[0].elapsed_ms, 150 + kSettleMs + 7);
}

TEST_F(PlayRunTest, EachRunHasItsOwnExpectedFramesAndTheLastCountAppliesToTheRest) {
  options_.repeat = 2;
  options_.expected_frames = {2, 1};
  library_.events = {{100, SendVideo}, {900, SendVideo}};
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 3U);
  EXPECT_EQ(reports[0].elapsed_ms, 900 + kSettleMs + 7);
  EXPECT_EQ(reports[1].elapsed_ms, 100 + kSettleMs + 7);
  EXPECT_EQ(reports[2].elapsed_ms, 100 + kSettleMs + 7);
}

TEST_F(PlayRunTest, EachRunWaitsForItsOwnLine) {
  options_.repeat = 1;
  options_.expected_line = "m";
  library_.events = {{100, [](CStreamPlayerImp& player) { player.OnMessage("m"); }}};
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_EQ(reports[1].reason, EndReason::kExpected);
  EXPECT_EQ(reports[1].elapsed_ms, 100 + kSettleMs + 7);
}

TEST_F(PlayRunTest, FramesBeforeTheSeekDoNotCountAsExpected) {
  options_.start_seconds = 5;
  options_.expected_frames = {1};
  library_.events = {{100, SendVideo}};
  const std::vector<RunReport> reports = Play();
  EXPECT_THAT(library_.calls, ElementsAre("begin a.ts", "end", "start 5", "begin a.ts", "end"));
  EXPECT_EQ(reports[0].reason, EndReason::kExpected);
  EXPECT_EQ(reports[0].elapsed_ms, 100 + 7 + 100 + kSettleMs + 7);
}

TEST_F(PlayRunTest, LineBeforeTheSeekDoesNotCountAsExpected) {
  options_.start_seconds = 5;
  options_.expected_line = "m";
  library_.events = {{100, [](CStreamPlayerImp& player) { player.OnMessage("m"); }},
                     {900, SendVideo}};
  const std::vector<RunReport> reports = Play();
  EXPECT_THAT(library_.calls, ElementsAre("begin a.ts", "end", "start 5", "begin a.ts", "end"));
  EXPECT_EQ(reports[0].reason, EndReason::kExpected);
  EXPECT_EQ(reports[0].elapsed_ms, 900 + 7 + 100 + kSettleMs + 7);
}

TEST_F(PlayRunTest, RefusedAddressIsStoppedWithoutWaiting) {
  library_.refuses = true;
  const std::vector<RunReport> reports = Play();
  EXPECT_THAT(library_.calls, ElementsAre("begin a.ts", "end"));
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].reason, EndReason::kRefused);
  EXPECT_EQ(reports[0].elapsed_ms, 7);
}

TEST_F(PlayRunTest, RepeatStartsTheSameAddressAgain) {
  options_.repeat = 2;
  options_.idle_exit_seconds = 0.1;
  library_.events = {{50, SendVideo}};
  const std::vector<RunReport> reports = Play();
  EXPECT_THAT(library_.calls,
              ElementsAre("begin a.ts", "end", "begin a.ts", "end", "begin a.ts", "end"));
  ASSERT_EQ(reports.size(), 3U);
  for (const RunReport& report : reports) {
    EXPECT_EQ(report.record.totals.video.frames, 1U);
    EXPECT_EQ(report.time_to_first_frame_ms, 50.0);
    EXPECT_EQ(report.elapsed_ms, 157);
  }
}

TEST_F(PlayRunTest, InterruptionEndsTheRunAndSkipsTheRepeats) {
  options_.repeat = 5;
  options_.idle_exit_seconds = 0.1;
  interrupted_at_ms_ = 150;
  const std::vector<RunReport> reports = Play();
  EXPECT_THAT(library_.calls, ElementsAre("begin a.ts", "end", "begin a.ts", "end"));
  ASSERT_EQ(reports.size(), 2U);
  EXPECT_EQ(reports[1].reason, EndReason::kInterrupted);
}

TEST_F(PlayRunTest, StartSeeksAfterTheFirstFrame) {
  options_.start_seconds = 5;
  options_.idle_exit_seconds = 0.5;
  library_.events = {{100, SendAudio}, {200, SendVideo}};
  const std::vector<RunReport> reports = Play();
  EXPECT_THAT(library_.calls, ElementsAre("begin a.ts", "end", "start 5", "begin a.ts", "end"));
  ASSERT_EQ(reports.size(), 1U);
  // The frame before the seek is not counted, and times count from the start after the seek.
  EXPECT_EQ(reports[0].record.totals.audio.frames, 1U);
  EXPECT_EQ(reports[0].record.totals.video.frames, 1U);
  EXPECT_EQ(reports[0].time_to_first_frame_ms, 100.0);
  EXPECT_THAT(reports[0].stop_ms, ElementsAre(7.0, 7.0));
  EXPECT_EQ(reports[0].elapsed_ms, 100 + 7 + 200 + 500 + 7);
}

TEST_F(PlayRunTest, StartWithoutAFrameEndsIdleWithoutASeek) {
  options_.start_seconds = 5;
  options_.idle_exit_seconds = 0.5;
  const std::vector<RunReport> reports = Play();
  EXPECT_THAT(library_.calls, ElementsAre("begin a.ts", "end"));
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].reason, EndReason::kIdle);
}

TEST_F(PlayRunTest, RepeatsSetTheStartPositionDirectly) {
  options_.start_seconds = 5;
  options_.repeat = 1;
  options_.idle_exit_seconds = 0.5;
  library_.events = {{100, SendVideo}};
  Play();
  EXPECT_THAT(library_.calls, ElementsAre("begin a.ts", "end", "start 5", "begin a.ts", "end",
                                          "start 5", "begin a.ts", "end"));
}

TEST_F(PlayRunTest, StopAfterCountsTheTimeBeforeTheSeekToo) {
  options_.start_seconds = 5;
  options_.stop_after_seconds = 0.3;
  library_.events = {{100, SendVideo}};
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_EQ(reports[0].reason, EndReason::kStopAfter);
  EXPECT_LE(reports[0].elapsed_ms, 300 + 10 + 7);
}

TEST_F(PlayRunTest, LinesSentWhileStoppingBelongToTheRun) {
  options_.idle_exit_seconds = 0.1;
  library_.on_end = [](CStreamPlayerImp& player) { player.OnMessage("PLAY TS NO:"); };
  const std::vector<RunReport> reports = Play();
  ASSERT_EQ(reports.size(), 1U);
  EXPECT_THAT(reports[0].record.messages, ElementsAre("PLAY TS NO:"));
}

TEST_F(PlayRunTest, StopTimeIsPrinted) {
  options_.idle_exit_seconds = 0.1;
  Play();
  EXPECT_EQ(output_.Text(), "[0.107 s] EndDownload took 7.0 ms\n");
}

}  // namespace
}  // namespace host
