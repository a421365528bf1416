#include "host/console/stats_player.h"

#include <gmock/gmock.h>

#include <string>
#include <thread>
#include <vector>

#include "host/shared/guarded_call.h"
#include "tests/host/every_call.h"
#include "tests/host/host_support.h"
#include "tests/host/simulated_clock.h"

namespace host {
namespace {

using testing::ElementsAre;

// Records the names of the calls that it receives.
class CallReport final : public Report {
 public:
  void OnDuration(float) override { calls.emplace_back("duration"); }
  void OnBufferedTime(float) override { calls.emplace_back("buffered"); }
  void OnAudioClock(float) override { calls.emplace_back("clock"); }
  void OnAudioFrame(MediaFrame frame) override {
    calls.push_back("audio " + std::to_string(frame.pts));
  }
  void OnVideoFrame(MediaFrame frame) override {
    calls.push_back("video " + std::to_string(frame.pts));
  }
  void OnMessage(std::string line) override { calls.push_back("message " + line); }
  void OnPlayResult(std::string line) override { calls.push_back("result " + line); }
  void OpenRun() override { calls.emplace_back("run"); }
  bool Write(const std::string&) override { return true; }

  std::vector<std::string> calls;
};

class StatsPlayerTest : public testing::Test {
 protected:
  StatsPlayerTest()
      : dump_(Dump::Open(directory_.path(), error_)),
        screen_(output_.get(), {}),
        player_(clock_, screen_, dump_.get()) {}

  TestDirectory directory_;
  std::string error_;
  std::unique_ptr<Dump> dump_;
  OutputFile output_;
  SimulatedClock clock_;
  Screen screen_;
  StatsPlayer player_;
};

TEST_F(StatsPlayerTest, FramesAreCountedByKind) {
  clock_.AdvanceTo(40);
  player_.OnVideoFrame(FrameOf(180'000, "1234"));
  clock_.AdvanceTo(50);
  player_.OnVideoFrame(FrameOf(90'000, "12"));
  player_.OnAudioFrame(FrameOf(270'000, "123"));

  const RunRecord record = player_.Record();
  EXPECT_EQ(record.totals.video.frames, 2U);
  EXPECT_EQ(record.totals.video.bytes, 6U);
  EXPECT_EQ(record.totals.video.FirstSeconds(), 1.0);
  EXPECT_EQ(record.totals.video.LastSeconds(), 2.0);
  EXPECT_EQ(record.totals.video.SpanSeconds(), 1.0);
  EXPECT_EQ(record.totals.audio.frames, 1U);
  EXPECT_EQ(record.totals.audio.bytes, 3U);
  EXPECT_EQ(record.first_frame_ms, 40.0);
  EXPECT_EQ(player_.FramesSeen(), 3U);
  EXPECT_EQ(player_.LastArrivalMs(), 50);
}

TEST_F(StatsPlayerTest, NewestNumbersAreKept) {
  player_.OnDuration(1.5F);
  player_.OnDuration(2.5F);
  player_.OnBufferedTime(4.0F);
  player_.OnAudioClock(3.0F);
  const PlayTotals totals = player_.Totals();
  EXPECT_EQ(totals.duration, 2.5F);
  EXPECT_EQ(totals.buffered_time, 4.0F);
  EXPECT_EQ(totals.audio_clock, 3.0F);
}

TEST_F(StatsPlayerTest, TextsAreKeptAndPrintedWithTheirTime) {
  clock_.AdvanceTo(1500);
  player_.OnMessage("PLAY TS NO:a\x1b\n");
  player_.OnPlayResult("PLAY:FLV OK:b");
  EXPECT_THAT(player_.Record().messages, ElementsAre("PLAY TS NO:a\x1b\n"));
  EXPECT_THAT(player_.Record().results, ElementsAre("PLAY:FLV OK:b"));
  EXPECT_EQ(output_.Text(), "[1.500 s] PLAY TS NO:a\\x1b\\n\n[1.500 s] PLAY:FLV OK:b\n");
}

TEST_F(StatsPlayerTest, EveryKindOfEventIsDumped) {
  player_.OnMessage("m");
  player_.OnPlayResult("r");
  player_.OnDuration(1.0F);
  player_.OnBufferedTime(2.5F);
  player_.OnAudioClock(3.0F);
  player_.OnAudioFrame(FrameOf(3, "a"));
  EXPECT_TRUE(dump_->Close());
  EXPECT_EQ(ContentOf(directory_.path() / "events.csv"),
            "arrival_ms,event,value\n0.000,message,m\n0.000,result,r\n0.000,duration,1\n"
            "0.000,buffered,2.5\n0.000,clock,3\n");
  EXPECT_EQ(ContentOf(directory_.path() / "audio.es"), "a");
}

TEST_F(StatsPlayerTest, EveryCallCountsAsAnArrival) {
  const auto expect_arrival = [this](const auto& call) {
    clock_.Advance(10);
    call();
    EXPECT_EQ(player_.LastArrivalMs(), clock_.NowMs());
  };
  expect_arrival([&] { player_.OnMessage("m"); });
  expect_arrival([&] { player_.OnPlayResult("r"); });
  expect_arrival([&] { player_.OnDuration(1); });
  expect_arrival([&] { player_.OnBufferedTime(1); });
  expect_arrival([&] { player_.OnAudioClock(1); });
  expect_arrival([&] { player_.OnAudioFrame(FrameOf(1, "a")); });
  expect_arrival([&] { player_.OnVideoFrame(FrameOf(1, "a")); });
}

TEST_F(StatsPlayerTest, OnlyTextsAreKeptWhileRecordingIsOff) {
  player_.SetRecording(false);
  player_.OnMessage("before");
  player_.OnDuration(9.0F);
  player_.OnVideoFrame(FrameOf(1, "before"));
  player_.SetRecording(true);
  player_.OnMessage("after");
  player_.OnVideoFrame(FrameOf(2, "after"));

  EXPECT_EQ(player_.FramesSeen(), 2U);
  const RunRecord record = player_.Record();
  EXPECT_EQ(record.totals.Frames(), 1U);
  EXPECT_EQ(record.totals.duration, std::nullopt);
  EXPECT_THAT(record.messages, ElementsAre("before", "after"));
  EXPECT_TRUE(dump_->Close());
  EXPECT_EQ(ContentOf(directory_.path() / "video.es"), "after");
  EXPECT_EQ(ContentOf(directory_.path() / "events.csv"),
            "arrival_ms,event,value\n0.000,message,after\n");
}

TEST_F(StatsPlayerTest, EveryRecordedCallAndAllTextsGoToTheReport) {
  CallReport report;
  StatsPlayer player(clock_, screen_, nullptr, &report);
  player.OpenRun();
  player.SetRecording(false);
  MakeEveryCall(player, 1);
  EXPECT_THAT(report.calls, ElementsAre("run", "message m", "result r"));
  report.calls.clear();
  player.SetRecording(true);
  MakeEveryCall(player, 2);
  EXPECT_THAT(report.calls, ElementsAre("message m", "result r", "duration", "buffered", "clock",
                                        "audio 2", "video 2"));
}

TEST_F(StatsPlayerTest, WithoutMemoryNoCallThrowsAndOneLineReportsIt) {
  ReportNextFailure();
  ReportWithoutMemory report;
  StatsPlayer player(clock_, screen_, nullptr, &report);
  testing::internal::CaptureStderr();
  EXPECT_NO_THROW(MakeEveryCall(player, 1));
  const std::string printed = testing::internal::GetCapturedStderr();
  EXPECT_THAT(printed, testing::StartsWith("a call from the library failed: "));
  EXPECT_EQ(printed.find('\n'), printed.size() - 1) << printed;
}

TEST_F(StatsPlayerTest, OpenRunClearsThePreviousRun) {
  player_.OnVideoFrame(FrameOf(1, "a"));
  player_.OnMessage("m");
  player_.OnDuration(1.0F);
  player_.OpenRun();
  const RunRecord record = player_.Record();
  EXPECT_EQ(record.totals.Frames(), 0U);
  EXPECT_EQ(record.first_frame_ms, std::nullopt);
  EXPECT_EQ(record.totals.duration, std::nullopt);
  EXPECT_TRUE(record.messages.empty());
  EXPECT_EQ(player_.FramesSeen(), 0U);
}

TEST_F(StatsPlayerTest, CallsFromThreeThreadsAreAllCounted) {
  constexpr std::uint64_t kCalls = 1000;
  const auto repeat = [](const auto& call) {
    for (std::uint64_t i = 0; i < kCalls; ++i) call(i);
  };
  std::thread video([&] { repeat([&](auto i) { player_.OnVideoFrame(FrameOf(i, "v")); }); });
  std::thread audio([&] { repeat([&](auto i) { player_.OnAudioFrame(FrameOf(i, "a")); }); });
  repeat([&](auto i) {
    player_.OnDuration(static_cast<float>(i));
    player_.OnPlayResult("r");
    EXPECT_LE(player_.Totals().Frames(), 2 * kCalls);
  });
  video.join();
  audio.join();
  const RunRecord record = player_.Record();
  EXPECT_EQ(record.totals.video.frames, kCalls);
  EXPECT_EQ(record.totals.audio.frames, kCalls);
  EXPECT_EQ(record.results.size(), kCalls);
}

}  // namespace
}  // namespace host
