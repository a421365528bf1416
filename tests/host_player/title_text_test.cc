#include "host/player/title_text.h"

#include <gtest/gtest.h>

#include <limits>

namespace player {
namespace {

TEST(TitleTextTest, TimesHaveHoursOnlyIfThereAreAny) {
  EXPECT_EQ(TimeText(0), "0:00");
  EXPECT_EQ(TimeText(59.99), "0:59");
  EXPECT_EQ(TimeText(754), "12:34");
  EXPECT_EQ(TimeText(3661), "1:01:01");
  EXPECT_EQ(TimeText(-3), "0:00");
  EXPECT_EQ(TimeText(std::numeric_limits<double>::quiet_NaN()), "0:00");
}

TEST(TitleTextTest, TitleBeforeAnythingIsKnown) { EXPECT_EQ(TitleText({}), "-:-- (waiting)"); }

TEST(TitleTextTest, AllKnownFactsAreShown) {
  TitleFacts facts;
  facts.state = PlayState::kPlaying;
  facts.position = 5.4;
  facts.duration = 12;
  facts.buffered = 9.9;
  facts.status = "PLAY TS OK:http://h/a.ts";
  EXPECT_EQ(TitleText(facts), "0:05 / 0:12, buffered to 0:09 - PLAY TS OK:http://h/a.ts");
  facts.state = PlayState::kPaused;
  EXPECT_EQ(TitleText(facts), "0:05 / 0:12, buffered to 0:09 (paused) - PLAY TS OK:http://h/a.ts");
  facts.state = PlayState::kEnded;
  facts.status.clear();
  EXPECT_EQ(TitleText(facts), "0:05 / 0:12, buffered to 0:09 (ended)");
}

TEST(TitleTextTest, BytesOfTheStreamAreMadePrintable) {
  TitleFacts facts;
  facts.status = "a\nb\xff";
  EXPECT_EQ(TitleText(facts), "-:-- (waiting) - a\\nb\\xff");
}

}  // namespace
}  // namespace player
