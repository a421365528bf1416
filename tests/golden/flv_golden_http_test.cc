// Plays a real FLV file over HTTP, in blocks of any size with pauses. The player must receive what
// the parser makes of the same bytes in memory.
#include <gtest/gtest.h>

#include <string>

#include "tests/golden/media_samples.h"
#include "tests/golden/media_tools.h"
#include "tests/support/flv_play.h"

namespace stream {
namespace {

class FlvGoldenHttpTest : public FlvPlayFixture, public testing::WithParamInterface<std::string> {};

TEST_P(FlvGoldenHttpTest, BlocksOverHttpGiveTheSameDumpAsMemory) {
  const flv_test::Bytes stream = ReadWholeFile(FileOf(FlvSamples().back()));
  server_.Serve(stream);
  ExpectAllFrames(server_.Url("/paced/" + GetParam() + "/sample.flv"), stream);
  EXPECT_GT(player_.Snapshot().video.size(), 100U);
}

INSTANTIATE_TEST_SUITE_P(PieceSizes, FlvGoldenHttpTest,
                         testing::Values("1", "17", "4096", "100000000"),
                         [](const auto& suite) { return "Of" + suite.param + "Bytes"; });

}  // namespace
}  // namespace stream
