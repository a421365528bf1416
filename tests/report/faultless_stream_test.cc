// Streams of each format without faults, delivered as to hosts without and with pacing. The report
// must find nothing odd in them, and must still find a fault that is added.
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "host/report/findings.h"
#include "tests/report/demuxed_stream.h"
#include "tests/report/report_support.h"

namespace report {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kFrames = 500;               // 20 s
constexpr std::uint64_t kFirst = 126'000;  // the first PTS in streams of ffmpeg
constexpr double kUnpacedMs = 1;

std::vector<std::string> TitlesOf(const std::vector<PesTimes>& video,
                                  const HeaderBytes& header = {}) {
  return TitlesOf(DemuxedStream(video, header).Record(kUnpacedMs));
}

// Adds `ticks` to the times of all frames from `index` on.
std::vector<PesTimes> Shifted(std::vector<PesTimes> video, std::size_t index, std::int64_t ticks) {
  for (std::size_t n = index; n < video.size(); ++n) {
    video[n].pts += static_cast<std::uint64_t>(ticks);
    if (video[n].dts) *video[n].dts += static_cast<std::uint64_t>(ticks);
  }
  return video;
}

TEST(FaultlessStreamTest, TsFramesWithOnlyAPtsHaveNothingOdd) {
  DemuxedStream stream(WithoutBFrames(kFrames, kFirst));
  const ReportRecord record = stream.Record(kUnpacedMs);
  EXPECT_THAT(TitlesOf(record), IsEmpty());
  EXPECT_EQ(record.video.Steps().same_time, 0U);
  EXPECT_EQ(record.video.Steps().late_frames, 0U);
  EXPECT_TRUE(record.video.HasValidDts()) << "each meaningless DTS was recognised at once";
}

TEST(FaultlessStreamTest, TsWithOnlyAPtsHasNothingOddWhateverItsFirstPts) {
  for (const std::uint64_t first :
       {0ULL, 1ULL, 3600ULL, 800'000ULL, 900'100ULL, 8'589'000'000ULL}) {
    EXPECT_THAT(TitlesOf(WithoutBFrames(100, first)), IsEmpty()) << "from " << first;
  }
}

TEST(FaultlessStreamTest, TsWithBFramesHasNothingOdd) {
  const auto video = WithBFrames(kFrames, kFirst);
  DemuxedStream stream(video);
  const ReportRecord record = stream.Record(kUnpacedMs);
  EXPECT_THAT(TitlesOf(record), IsEmpty());
  EXPECT_EQ(record.video.Steps().same_time, 0U);
  EXPECT_TRUE(record.video.HasValidDts());
  const auto alone =
      std::count_if(video.begin(), video.end(), [](const PesTimes& times) { return !times.dts; });
  EXPECT_GT(alone, kFrames / 3) << "too few B-frames without a DTS";
}

TEST(FaultlessStreamTest, TsWithStuffingInItsPesHeadersHasNothingOdd) {
  for (std::size_t stuffing = 1; stuffing < 7; ++stuffing) {
    const HeaderBytes header(stuffing, 0xFF);
    constexpr std::uint64_t kLate = 7'516'300'000;  // stuffing reads as a slightly lower DTS
    for (const std::uint64_t first : {kFirst, kLate}) {
      EXPECT_THAT(TitlesOf(WithoutBFrames(100, first), header), IsEmpty());
      EXPECT_THAT(TitlesOf(WithBFrames(100, first), header), IsEmpty());
    }
  }
}

TEST(FaultlessStreamTest, TsWithAnotherHeaderFieldAfterItsPtsHasNothingOdd) {
  const HeaderBytes field = {0, 0, 0, 3, 7};  // read as a DTS of 387
  DemuxedStream stream(WithoutBFrames(kFrames, kFirst), field);
  const ReportRecord record = stream.Record(kUnpacedMs);
  EXPECT_FALSE(record.video.HasValidDts());
  EXPECT_THAT(TitlesOf(record), IsEmpty());
  EXPECT_EQ(record.video.Steps().same_time, 0U) << "also before the DTS was rejected";
}

TEST(FaultlessStreamTest, StreamPlayedInRealTimeHasNothingOdd) {
  EXPECT_THAT(TitlesOf(DemuxedStream(WithoutBFrames(kFrames, kFirst)).Record(kMsOfFrame)),
              IsEmpty());
  EXPECT_THAT(TitlesOf(DemuxedStream(WithBFrames(kFrames, kFirst)).Record(kMsOfFrame)), IsEmpty());
}

TEST(FaultlessStreamTest, GapIsFoundWithAndWithoutBFrames) {
  constexpr std::int64_t kSecond = 90'000;
  for (const std::size_t index : {2U, 50U, 400U}) {
    EXPECT_THAT(TitlesOf(Shifted(WithoutBFrames(kFrames, kFirst), index, 3 * kSecond)),
                Contains("Gap in the video"));
    EXPECT_THAT(TitlesOf(Shifted(WithBFrames(kFrames, kFirst), index, 3 * kSecond)),
                Contains("Gap in the video"));
  }
}

TEST(FaultlessStreamTest, JumpBackIsFoundWithAndWithoutBFrames) {
  constexpr std::int64_t kSecond = 90'000;
  for (const std::int64_t back : {kSecond / 10, kSecond, 5 * kSecond}) {
    const auto without = Shifted(WithoutBFrames(kFrames, 10 * kSecond), 301, -back);
    EXPECT_THAT(TitlesOf(without), Contains("Jump back of the video")) << back;
    const auto with = Shifted(WithBFrames(kFrames, 10 * kSecond), 301, -back);
    EXPECT_THAT(TitlesOf(with), Contains("Jump back of the video")) << back;
  }
}

// FLV and MP4: a frame is a NAL unit, several frames have the same time, and `pts` is the decode
// time.
ReportRecord RecordOfNalUnits(int samples) {
  ReportRecord record;
  double ms = 0;
  for (int n = 0; n < samples; ++n) {
    for (int unit = 0; unit < 2; ++unit) record.AddVideo(ms++, FrameAt(TicksOf(n) - TicksOf(0)));
    record.AddAudio(ms, FrameAt(TicksOf(n) - TicksOf(0)));
  }
  return record;
}

TEST(FaultlessStreamTest, FlvAndMp4HaveNothingOdd) {
  EXPECT_THAT(TitlesOf(RecordOfNalUnits(kFrames)), IsEmpty());
}

TEST(FaultlessStreamTest, BufferedTimeOfReorderedSamplesHasNothingOdd) {
  ReportRecord record = RecordOfNalUnits(kFrames);
  for (const double seconds : {0.08, 0.2, 0.12, 0.16, 0.32, 0.24}) {
    record.buffered_time.Add(0, seconds);
  }
  EXPECT_THAT(TitlesOf(record), IsEmpty());
  record.buffered_time.Add(0, 60);
  record.buffered_time.Add(0, 58.9);
  EXPECT_THAT(TitlesOf(record), ElementsAre("The buffered time goes back"));
}

// HLS delivers each segment as fast as it can, and each kind of frame on its own thread. Here three
// times as much audio as video is delivered in the same time.
void AddUnpaced(ReportRecord& record) {
  for (int n = 0; n < kFrames; ++n) {
    record.AddVideo(n, FrameAt(TicksOf(n)));
    for (int audio = 3 * n; audio < std::min(3 * n + 3, kFrames); ++audio) {
      record.AddAudio(n, FrameAt(TicksOf(audio)));
    }
  }
}

TEST(FaultlessStreamTest, DistanceWithoutPacingIsNotReported) {
  ReportRecord record;
  AddUnpaced(record);
  EXPECT_GT(std::abs(record.distance.range->low), 10);
  EXPECT_THAT(TitlesOf(record), IsEmpty());
}

TEST(FaultlessStreamTest, DistanceWithPacingIsReported) {
  ReportRecord record;
  record.host_paces = true;
  AddUnpaced(record);
  EXPECT_THAT(TitlesOf(record), ElementsAre("Video and audio drift apart"));
}

TEST(FaultlessStreamTest, DistanceOfAKindThatArrivesTooLateIsReported) {
  ReportRecord record;
  for (int n = 0; n < kFrames; ++n) {
    record.AddVideo(n * kMsOfFrame, FrameAt(TicksOf(n)));
    if (n >= 200) record.AddAudio(n * kMsOfFrame, FrameAt(TicksOf(n - 200)));  // 8 s late
  }
  EXPECT_THAT(TitlesOf(record), Contains("Video and audio drift apart"));
}

TEST(FaultlessStreamTest, PlayTimeOfAFrameDeliveredEarlyIsNotOdd) {
  ReportRecord record = RecordOfNalUnits(10);
  MediaFrame frame = FrameAt(TicksOf(10));
  frame.playTime = 900'000;
  record.AddVideo(400, frame);
  frame.playTime -= 80'000;  // as reordering may cause
  record.AddVideo(400, frame);
  EXPECT_EQ(record.video.play_time_back, 0U);
  frame.playTime -= 91'000;
  record.AddVideo(400, frame);
  EXPECT_EQ(record.video.play_time_back, 1U);
}

}  // namespace
}  // namespace report
