#include "host/report/report_recorder.h"

#include <gtest/gtest.h>

#include <thread>

#include "tests/report/report_support.h"

namespace report {
namespace {

// A host clock that stands still.
double NoTime() { return 0; }

TEST(ReportRecorderTest, EveryCallIsRecorded) {
  ReportRecorder recorder(NoTime);
  recorder.Message("line");
  recorder.PlayResult("result");
  recorder.Video(FrameAt(90'000));
  recorder.Audio(FrameAt(45'000));
  recorder.AudioClock(1);
  recorder.Duration(2);
  recorder.BufferedTime(3);

  const ReportRecord record = recorder.Snapshot();
  EXPECT_EQ(record.texts.Count(TextKind::kMessage), 1U);
  EXPECT_EQ(record.texts.Count(TextKind::kResult), 1U);
  EXPECT_EQ(record.video.frames, 1U);
  EXPECT_EQ(record.audio.frames, 1U);
  EXPECT_EQ(record.distance.newest, 0.5);
  EXPECT_EQ(record.audio_clock.newest, 1);
  EXPECT_EQ(record.duration.newest, 2);
  EXPECT_EQ(record.buffered_time.newest, 3);
}

TEST(ReportRecorderTest, TimesCountFromTheStart) {
  double now_ms = 1000;
  ReportRecorder recorder([&now_ms] { return now_ms; });
  now_ms = 1030;
  recorder.Audio(FrameAt(0));
  now_ms = 1050;
  EXPECT_EQ(recorder.Snapshot().audio.last_ms, 30);
  EXPECT_EQ(recorder.Snapshot().elapsed_ms, 50);
  recorder.Restart();
  now_ms = 1057;
  EXPECT_EQ(recorder.Snapshot().elapsed_ms, 7);
}

TEST(ReportRecorderTest, RestartClearsTheRecord) {
  ReportRecorder recorder(NoTime);
  recorder.Message("line");
  recorder.Video(FrameAt(0));
  recorder.Restart();
  const ReportRecord record = recorder.Snapshot();
  EXPECT_EQ(record.video.frames, 0U);
  EXPECT_EQ(record.texts.Count(TextKind::kMessage), 0U);
}

TEST(ReportRecorderTest, CallsOfManyThreadsAreAllCounted) {
  constexpr int kCalls = 5000;
  ReportRecorder recorder(NoTime);
  const auto repeat = [](auto call) {
    for (int n = 0; n < kCalls; ++n) call(n);
  };
  std::thread video([&] { repeat([&](int n) { recorder.Video(FrameAt(TicksOf(n))); }); });
  std::thread audio([&] { repeat([&](int n) { recorder.Audio(FrameAt(TicksOf(n))); }); });
  std::thread texts([&] { repeat([&](int) { recorder.Message("line"); }); });
  repeat([&](int) { recorder.Duration(1); });
  for (int n = 0; n < 20; ++n) EXPECT_LE(recorder.Snapshot().video.frames, kCalls);
  for (std::thread* thread : {&video, &audio, &texts}) thread->join();

  const ReportRecord record = recorder.Snapshot();
  EXPECT_EQ(record.video.frames, kCalls);
  EXPECT_EQ(record.audio.frames, kCalls);
  EXPECT_EQ(record.duration.count, kCalls);
  EXPECT_EQ(record.texts.Count(TextKind::kMessage), kCalls);
}

}  // namespace
}  // namespace report
