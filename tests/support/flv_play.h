// A facade, a recording player and a server, for tests that play FLV streams.
#ifndef TESTS_SUPPORT_FLV_PLAY_H_
#define TESTS_SUPPORT_FLV_PLAY_H_

#include <cstddef>
#include <string>
#include <vector>

#include "tests/golden/frame_dump.h"
#include "tests/support/flv_parse.h"
#include "tests/support/flv_tags.h"
#include "tests/support/play.h"
#include "tests/support/test_server.h"

namespace stream {

// The received frames in the form of the parser's frames. Every FLV frame is marked as video.
inline FrameDump DumpOf(const RecordingPlayer::Record& record) {
  const auto copy = [](const std::vector<RecordedFrame>& frames) {
    std::vector<DumpedFrame> copies;
    for (const RecordedFrame& frame : frames) {
      copies.push_back({frame.pts, frame.dts, frame.play_time, true, true, frame.payload});
    }
    return copies;
  };
  return {copy(record.video), copy(record.audio)};
}

class FlvPlayFixture : public Play<TestServer> {
 protected:
  static std::string OkLine(const std::string& url) { return "PLAY FLV CACHE_NO OK:" + url; }

  // Plays until all frames of the stream have been received, stops, and compares them with the
  // frames that the parser makes of the same bytes in memory.
  void ExpectAllFrames(const std::string& url, const flv_test::Bytes& stream) {
    const FrameDump expected = ParseFlv(stream).frames;
    downloader_.BeginDownload(url);
    EXPECT_TRUE(WaitForVideo(expected.video.size()) && WaitForAudio(expected.audio.size()));
    EXPECT_TRUE(Stop());
    EXPECT_EQ(DumpText(DumpOf(player_.Snapshot())), DumpText(expected));
  }

  // The address of an endless stream. Call it before the first request.
  std::string ServeLive() {
    flv_test::Bytes stream = flv_test::StreamStart();
    const std::string head = std::to_string(stream.size());
    for (int i = 0; i < 100; ++i) flv_test::Append(stream, flv_test::StreamFrame(i, 300));
    server_.Serve(stream);
    return server_.Url("/live/" + head + "/a.flv");
  }
};

}  // namespace stream

#endif  // TESTS_SUPPORT_FLV_PLAY_H_
