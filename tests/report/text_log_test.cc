#include "host/report/text_log.h"

#include <gtest/gtest.h>

namespace report {
namespace {

TEST(TextLogTest, FirstAndNewestLinesAreKeptAndAllCounted) {
  TextLog log;
  for (int n = 0; n < 10'000; ++n) log.Add(n, TextKind::kMessage, std::to_string(n));
  log.Add(10'000, TextKind::kResult, "result");
  const std::vector<TimedText> kept = log.Kept();
  ASSERT_EQ(kept.size(), kFirstTexts + kNewestTexts);
  EXPECT_EQ(kept.front().text, "0");
  EXPECT_EQ(kept[kFirstTexts - 1].text, std::to_string(kFirstTexts - 1));
  EXPECT_EQ(kept.back().text, "result");
  EXPECT_EQ(log.Count(TextKind::kMessage), 10'000U);
  EXPECT_EQ(log.Count(TextKind::kResult), 1U);
  EXPECT_EQ(log.Dropped(), 10'001U - kept.size());
}

TEST(TextLogTest, BeginningOfALongLineIsKept) {
  TextLog log;
  log.Add(0, TextKind::kMessage, std::string(1'000'000, 'x'));
  EXPECT_EQ(log.Kept()[0].text, std::string(kLongestText, 'x') + "... (1000000 bytes)");
}

TEST(TextLogTest, FailuresInDroppedLinesAreCountedToo) {
  TextLog log;
  for (int n = 0; n < 5000; ++n)
    log.Add(n, TextKind::kMessage, n % 2 ? "PLAY Try:a" : "PLAY M3U8:a");
  log.Add(5000, TextKind::kResult, "PLAY Try:no message");
  const std::vector<FailureLines> failures = log.Failures();
  ASSERT_EQ(failures.size(), 1U);
  EXPECT_EQ(failures[0].beginning, "PLAY Try:");
  EXPECT_EQ(failures[0].count, 2500U);
  EXPECT_EQ(failures[0].first_ms, 1);
}

}  // namespace
}  // namespace report
