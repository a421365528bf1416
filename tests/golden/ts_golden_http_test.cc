// Plays real transport streams over HTTP, in blocks of any size. The player must receive what the
// demultiplexer makes of the same bytes in memory. Play times are not compared: a frame may be
// delivered before the frames that determine its play time have been received.
#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/frame_queue.h"
#include "tests/golden/frame_dump.h"
#include "tests/golden/media_samples.h"
#include "tests/golden/media_tools.h"
#include "tests/support/ts_play.h"
#include "ts/ts_demux.h"

namespace stream {
namespace {

DumpedFrame WithoutPlayTime(const RecordedFrame& frame, bool is_video) {
  return {frame.pts, frame.dts, 0, is_video, true, frame.payload};
}

FrameDump DumpWithoutPlayTimes(const RecordingPlayer::Record& record) {
  FrameDump dump;
  for (const RecordedFrame& frame : record.video) {
    dump.video.push_back(WithoutPlayTime(frame, true));
  }
  for (const RecordedFrame& frame : record.audio) {
    dump.audio.push_back(WithoutPlayTime(frame, false));
  }
  return dump;
}

FrameDump DemultiplexFromMemory(const std::vector<std::uint8_t>& stream) {
  const TsDemuxLock lock;
  ProcessTsDemuxer().Reset();
  ResetFrameQueues();
  ts_demux_feed(stream.data(), static_cast<std::int32_t>(stream.size()));
  FrameDump dump = PopQueuedFrames();
  for (auto* frames : {&dump.video, &dump.audio}) {
    for (DumpedFrame& frame : *frames) frame.play = 0;
  }
  ProcessTsDemuxer().Reset();
  return dump;
}

class TsGoldenHttpTest : public TsPlay, public testing::WithParamInterface<std::string> {};

TEST_P(TsGoldenHttpTest, BlocksOverHttpGiveTheSameDumpAsMemory) {
  const std::vector<std::uint8_t> stream = ReadWholeFile(FileOf(MediaSamples().front()));
  const FrameDump expected = DemultiplexFromMemory(stream);
  ASSERT_FALSE(expected.video.empty());

  server_.Serve(stream);
  downloader_.BeginDownload(server_.Url("/pieces/" + GetParam() + "/sample.ts"));
  EXPECT_TRUE(WaitForVideo(expected.video.size()) && WaitForAudio(expected.audio.size()));
  Stop();
  EXPECT_EQ(DumpText(DumpWithoutPlayTimes(player_.Snapshot())), DumpText(expected));
}

INSTANTIATE_TEST_SUITE_P(PieceSizes, TsGoldenHttpTest,
                         testing::Values("17", "187", "188", "4096", "100000000"),
                         [](const auto& suite) { return "Of" + suite.param + "Bytes"; });

}  // namespace
}  // namespace stream
