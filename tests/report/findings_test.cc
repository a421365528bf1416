#include "host/report/findings.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>

#include "tests/report/report_support.h"

namespace report {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::string SentenceOf(const ReportRecord& record, const std::string& title) {
  for (const Finding& finding : FindingsOf(record)) {
    if (finding.title == title) return finding.sentence;
  }
  return "";
}

ReportRecord SteadyRecord() {
  ReportRecord record;
  for (int n = 0; n < 100; ++n) {
    AddSteadyVideo(record, n, n + 1);
    AddSteadyAudio(record, n, n + 1);
  }
  return record;
}

TEST(FindingsTest, SteadyStreamHasNothingOdd) {
  EXPECT_THAT(FindingsOf(SteadyRecord()), IsEmpty());
}

TEST(FindingsTest, NoFrameAtAllIsOdd) {
  EXPECT_THAT(TitlesOf(ReportRecord()), ElementsAre("No frame was received"));
}

TEST(FindingsTest, AudioWithoutVideoIsOdd) {
  ReportRecord record;
  AddSteadyAudio(record, 0, 10);
  EXPECT_THAT(TitlesOf(record), ElementsAre("Audio without video"));
}

TEST(FindingsTest, VideoWithoutAudioIsOdd) {
  ReportRecord record;
  AddSteadyVideo(record, 0, 10);
  EXPECT_THAT(TitlesOf(record), ElementsAre("Video without audio"));
}

TEST(FindingsTest, GapIsReportedWithItsPositionAndWidth) {
  ReportRecord record;
  for (int n = 0; n < 100; ++n) {
    if (n < 50 || n >= 75) AddSteadyVideo(record, n, n + 1);
    AddSteadyAudio(record, n, n + 1);
  }
  EXPECT_THAT(TitlesOf(record), ElementsAre("Gap in the video"));
  EXPECT_EQ(
      SentenceOf(record, "Gap in the video"),
      "The video time stamps leave out 1 stretch of the stream. The widest is 1.040 s, before "
      "frame 50, which was received after 3.000 s.");
}

TEST(FindingsTest, JumpBackIsReportedWithItsPositionAndWidth) {
  ReportRecord record = SteadyRecord();
  record.AddAudio(4000, FrameAt(TicksOf(50)));
  record.AddAudio(4040, FrameAt(TicksOf(98)));
  EXPECT_THAT(SentenceOf(record, "Jump back of the audio"),
              HasSubstr("go back 1 time. The widest is 1.960 s, before frame 100, "));
}

TEST(FindingsTest, FramesWithoutPlayTimeAreOddOnlyAfterTheBeginning) {
  ReportRecord record = SteadyRecord();
  MediaFrame frame = FrameAt(TicksOf(100));
  frame.playTime = 0;
  record.AddVideo(4000, frame);
  EXPECT_EQ(SentenceOf(record, "Frames without playTime"),
            "1 video frame of 101 have playTime 0 though the stream has gone on.");

  ReportRecord beginning;
  frame = FrameAt(TicksOf(0));
  frame.playTime = 0;
  for (int n = 0; n < 3; ++n) beginning.AddVideo(0, frame);
  EXPECT_THAT(TitlesOf(beginning), ElementsAre("Video without audio"));
}

TEST(FindingsTest, EmptyFramesAreOdd) {
  ReportRecord record = SteadyRecord();
  MediaFrame frame = FrameAt(TicksOf(100));
  frame.size = 0;
  record.AddVideo(4000, frame);
  frame = FrameAt(TicksOf(101));
  frame.data = nullptr;
  record.AddVideo(4040, frame);
  frame = FrameAt(TicksOf(102));
  frame.size = -1;
  record.AddVideo(4080, frame);
  EXPECT_EQ(SentenceOf(record, "Empty video frames"),
            "3 video frames were received without a payload.");
}

TEST(FindingsTest, LatenessIsNotReportedIfTheHostPacesFrames) {
  ReportRecord record;
  record.host_paces = true;
  AddSteadyVideo(record, 0, 10);
  record.AddVideo(60'000, FrameAt(TicksOf(10)));
  EXPECT_THAT(TitlesOf(record), ElementsAre("Video without audio"));
}

TEST(FindingsTest, LateFrameIsOdd) {
  ReportRecord record = SteadyRecord();
  record.AddVideo(6000, FrameAt(TicksOf(100)));
  EXPECT_THAT(SentenceOf(record, "Late video"),
              HasSubstr("would have waited for 1 video frame, up to 2.000 s"));
}

TEST(FindingsTest, StartsAndEndsThatAreApartAreOdd) {
  ReportRecord record;
  AddSteadyVideo(record, 0, 100);
  AddSteadyAudio(record, 25, 60);
  EXPECT_EQ(SentenceOf(record, "Video and audio start apart"),
            "The first audio frame is 1.000 s behind the first video frame, by their time stamps.");
  EXPECT_EQ(SentenceOf(record, "Video and audio end apart"),
            "Video goes on for 1.600 s after the end of audio.");
}

TEST(FindingsTest, FailureLineIsReportedWithoutItsAddress) {
  ReportRecord record = SteadyRecord();
  record.texts.Add(1500, TextKind::kMessage, "PLAY TS NO:<b>x");
  record.texts.Add(1600, TextKind::kMessage, "PLAY TS NO:<b>y");
  EXPECT_EQ(SentenceOf(record, "A line reports a failure"),
            "\"PLAY TS NO\" was received 2 times, first after 1.500 s.");
}

TEST(FindingsTest, ClockThatGoesBackIsOddAndDurationThatGoesBackIsANote) {
  ReportRecord record = SteadyRecord();
  for (const double seconds : {4.0, 3.9}) {
    record.audio_clock.Add(100, seconds);
    record.duration.Add(100, seconds);
  }
  const std::vector<Finding> findings = FindingsOf(record);
  ASSERT_EQ(findings.size(), 2U);
  EXPECT_EQ(findings[0].title, "The audio clock goes back");
  EXPECT_EQ(findings[0].weight, Weight::kOdd);
  EXPECT_EQ(findings[1].title, "The duration goes back");
  EXPECT_EQ(findings[1].weight, Weight::kNote);
}

TEST(FindingsTest, DurationFarFromTheReceivedVideoIsANote) {
  ReportRecord record = SteadyRecord();
  record.duration.Add(0, 60);
  EXPECT_EQ(SentenceOf(record, "Duration and video differ"),
            "The last reported duration is 60.000 s, the received video spans 3.960 s.");
}

TEST(FindingsTest, NotANumberIsOdd) {
  ReportRecord record = SteadyRecord();
  record.duration.Add(0, std::numeric_limits<double>::quiet_NaN());
  EXPECT_THAT(TitlesOf(record), ElementsAre("The duration is no number"));
}

TEST(FindingsTest, OddFindingsAreListedFirst) {
  ReportRecord record = SteadyRecord();
  record.duration.Add(0, 60);
  record.audio_clock.Add(0, 2);
  record.audio_clock.Add(0, 1);
  const std::vector<Finding> findings = FindingsOf(record);
  EXPECT_EQ(findings.front().weight, Weight::kOdd);
  EXPECT_EQ(findings.back().weight, Weight::kNote);
}

}  // namespace
}  // namespace report
