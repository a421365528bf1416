#include "host/console/progress.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/host/host_support.h"

namespace host {
namespace {

PlayTotals SomeTotals() {
  PlayTotals totals;
  totals.video.frames = 300;
  totals.video.bytes = 1'000'000;
  totals.video.last_play_time = 1'080'000;
  totals.audio.frames = 520;
  totals.audio.bytes = 250'000;
  totals.audio.last_play_time = 1'107'000;
  totals.duration = 60.0F;
  return totals;
}

TEST(ProgressTest, TextShowsTimeDurationFramesBytesAndRate) {
  EXPECT_EQ(ProgressText(SomeTotals(), 420'000),
            "12.3 / 60.0 s  300 video  520 audio  1.25 MB  0.42 MB/s");
}

TEST(ProgressTest, UnknownDurationIsAQuestionMark) {
  EXPECT_EQ(ProgressText({}, 0), "0.0 / ? s  0 video  0 audio  0.00 MB  0.00 MB/s");
}

TEST(RateMeterTest, FirstSampleHasNoRate) { EXPECT_EQ(RateMeter().Update(1000, 5000), 0); }

TEST(RateMeterTest, RateIsBytesPerSecondOfTheElapsedTime) {
  RateMeter meter;
  meter.Update(1000, 0);
  EXPECT_DOUBLE_EQ(meter.Update(1500, 1000), 2000);
}

TEST(RateMeterTest, OldSamplesAreDropped) {
  RateMeter meter;
  meter.Update(0, 0);
  for (int now = 250; now <= 10'000; now += 250) meter.Update(now, 1'000'000);
  EXPECT_EQ(meter.Update(10'250, 1'000'000), 0);
}

TEST(ProgressLineTest, DrawsFourTimesASecondAndIsErasedAtTheEnd) {
  const OutputFile output;
  Screen screen(output.get(), {true, false});
  {
    ProgressLine line(screen);
    for (int now = 0; now < 1000; now += 10) {
      if (line.IsDue(now)) line.Draw(now, SomeTotals());
    }
  }
  const std::string text = output.Text();
  std::size_t drawn = 0;
  for (std::size_t at = text.find("12.3 /"); at != std::string::npos;
       at = text.find("12.3 /", at + 1)) {
    ++drawn;
  }
  EXPECT_EQ(drawn, 4U);
  EXPECT_TRUE(text.ends_with(" \r")) << text;
  EXPECT_EQ(std::count(text.begin(), text.end(), '\n'), 0);
}

TEST(ProgressLineTest, IsNeverDueWithoutATerminal) {
  const OutputFile output;
  Screen screen(output.get(), {false, false});
  EXPECT_FALSE(ProgressLine(screen).IsDue(1000));
}

}  // namespace
}  // namespace host
