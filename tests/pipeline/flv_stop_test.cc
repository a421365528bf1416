#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>

#include "flv/flv_stream.h"
#include "tests/support/flv_play.h"
#include "tests/support/local_file.h"
#include "tests/support/stop_sleep_recorder.h"
#include "tests/support/wait_until.h"

namespace stream {
namespace {

using flv_test::Bytes;
using flv_test::Join;
using flv_test::MakeStream;

// tests/conformance tests what every pipeline does at a stop; this file tests what only FLV does.
class FlvStopTest : protected RecordedStops, public FlvPlayFixture {
 protected:
  FlvStopTest() : RecordedStops([] { return g_flvRunning.load(); }) {}

  // Checks that after the stop each thread begins at most one more wait for bytes, and none longer
  // than the poll interval of the parser.
  bool StopPromptly() {
    const bool was_running = Stop();
    EXPECT_TRUE(sleep_recorder_.WasPrompt(std::chrono::milliseconds(100)));
    return was_running;
  }
};

// How far a stream has got when it is stopped.
struct Stage {
  const char* name;
  const char* path;
  Bytes body;
  std::function<bool(const RecordingPlayer::Record&)> reached;
  // Whether a task that reads the stream must have started by then. Otherwise the stop may happen
  // before a worker takes that task, which then reports nothing.
  bool is_read;
};

void PrintTo(const Stage& stage, std::ostream* out) { *out << stage.name; }

class FlvStopStageTest : public FlvStopTest, public testing::WithParamInterface<Stage> {};

TEST_P(FlvStopStageTest, DoesNotDelayTheStop) {
  const Stage& stage = GetParam();
  server_.Serve(stage.body);
  downloader_.BeginDownload(server_.Url(stage.path));
  ASSERT_TRUE(server_.WaitForRequests(1));
  EXPECT_TRUE(WaitUntil([&] { return stage.reached(player_.Snapshot()); }));
  EXPECT_TRUE(StopPromptly());
  const auto results = player_.Snapshot().results;
  EXPECT_THAT(results, testing::AnyOf(testing::SizeIs(1), testing::SizeIs(stage.is_read ? 1 : 0)));
}

bool AtOnce(const RecordingPlayer::Record& /*record*/) { return true; }
bool IsReported(const RecordingPlayer::Record& record) { return !record.results.empty(); }
bool HasFrames(const RecordingPlayer::Record& record) { return record.video.size() >= 3; }
template <std::uint32_t kCount>
bool HasStaged(const RecordingPlayer::Record& /*record*/) {
  return g_flvStream->UnreadSize() >= kCount;
}

Bytes LongScriptTag() { return Join({flv_test::Header(), flv_test::ScriptTag(Bytes(100'000, 1))}); }

INSTANTIATE_TEST_SUITE_P(
    Stages, FlvStopStageTest,
    testing::Values(
        Stage{"RequestJustReceived", "/plain/a.flv", MakeStream(50), AtOnce, false},
        Stage{"StallBeforeEnoughIsReceived", "/stall/a.flv", MakeStream(5), HasStaged<100>, false},
        Stage{"StallInASkippedTag", "/stall/a.flv", LongScriptTag(), IsReported, true},
        Stage{"StallInANalUnit", "/stall/a.flv", MakeStream(10, 20'000), HasFrames, true},
        Stage{"FastServerWithoutAnEnd", "/endless/a.flv", MakeStream(20, 50'000), HasFrames, true},
        Stage{"EndOfTheStream", "/plain/a.flv", MakeStream(3), HasFrames, true},
        Stage{"NoStreamAtAll", "/plain/a.flv", Bytes(100'000, 7), IsReported, true}),
    [](const auto& suite) { return suite.param.name; });

TEST_F(FlvStopTest, LocalFileEndsAtTheStop) {
  const Bytes stream = flv_test::MakeStreamOfSize(12 << 20, 300);
  downloader_.BeginDownload("file://" + WriteLocalFile("long.flv", stream));
  ASSERT_TRUE(WaitForVideo(5));
  EXPECT_TRUE(WaitUntil([] { return g_flvStream->UnreadSize() > 1'000'000; }));
  EXPECT_TRUE(StopPromptly());
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U) << "the memory is not released";
}

}  // namespace
}  // namespace stream
