#include "host/console/screen.h"

#include <gtest/gtest.h>

#include "tests/host/host_support.h"

namespace host {
namespace {

TEST(ScreenTest, StatusHasItsTimeInSeconds) {
  const OutputFile output;
  Screen(output.get(), {}).Status(1234.5, "PLAY TS:a.ts");
  EXPECT_EQ(output.Text(), "[1.234 s] PLAY TS:a.ts\n");
}

TEST(ScreenTest, QuietScreenPrintsLinesOnly) {
  const OutputFile output;
  Screen screen(output.get(), {true, true});
  screen.Status(1, "status");
  screen.Progress("progress");
  screen.EraseProgress();
  screen.Line("line");
  EXPECT_EQ(output.Text(), "line\n");
}

TEST(ScreenTest, ProgressIsNotShownWithoutATerminal) {
  const OutputFile output;
  Screen screen(output.get(), {false, false});
  screen.Progress("progress");
  screen.EraseProgress();
  EXPECT_EQ(output.Text(), "");
  EXPECT_FALSE(screen.ShowsProgress());
}

TEST(ScreenTest, ProgressIsErasedBeforeALine) {
  const OutputFile output;
  Screen screen(output.get(), {true, false});
  screen.Progress("12345");
  screen.Line("line");
  screen.Line("next");
  EXPECT_EQ(output.Text(), "12345\r\r     \rline\nnext\n");
}

TEST(ScreenTest, ShorterProgressErasesTheLongerOne) {
  const OutputFile output;
  Screen screen(output.get(), {true, false});
  screen.Progress("12345");
  screen.Progress("123");
  screen.EraseProgress();
  screen.EraseProgress();
  EXPECT_EQ(output.Text(), "12345\r\r     \r123\r\r   \r");
}

TEST(ScreenTest, ProgressIsCutToOneLine) {
  const OutputFile output;
  Screen(output.get(), {true, false}).Progress(std::string(200, 'x'));
  EXPECT_EQ(output.Text(), std::string(78, 'x') + '\r');
}

}  // namespace
}  // namespace host
