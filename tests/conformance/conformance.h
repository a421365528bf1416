// The common base of the typed tests of the conformance suite, which run for every format. The
// traits class of a format describes its differences and is the server of its streams:
//
//   Pipeline                 the class behind the facade
//   kName, kConsoleName      the format in the player's lines ("PLAY TS:") and in the console's
//   kOkLine                  the message that the stream is valid, without the address
//   kRestartLines            how many lines report a start of the address that played last
//   kOwnRunFlag              whether each pipeline has a run flag of its own, or all share one
//   kRequests                the minimum number of requests of every start
//   kAddressRequests         requests for the address itself that one start of Endless() makes
//                            while the time stands still
//   kPace                    the longest sleep of its loops
//   kDue, kDueAgain          the frames of Whole() in a first start, and in a start after a stop
//   Runs()                   the run flag of the pipeline that was started last
//   Whole(name)              the address of a short stream, served as fast as possible
//   Endless(name)            the address of a stream that is sent slowly, for long or for ever
//   Silent(name)             an address whose requests get no reply
//   Gated(name)              the address of a stream of which about half is sent at once, and the
//                            rest after ReleaseGated(name)
//   WaitForWhole()           waits until enough of Whole() has been received that another start
//   does
//                            not change what is reported
//   WaitForGate()            the same for the part of Gated() that is sent before the release
//
// Streams with different names have different addresses.
#ifndef TESTS_CONFORMANCE_CONFORMANCE_H_
#define TESTS_CONFORMANCE_CONFORMANCE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "common/frame_queue.h"
#include "tests/conformance/flv_format.h"
#include "tests/conformance/hls_format.h"
#include "tests/conformance/mp4_format.h"
#include "tests/conformance/ts_format.h"
#include "tests/support/play.h"
#include "tests/support/stop_sleep_recorder.h"
#include "tests/support/wait_until.h"

namespace stream {

namespace conformance {

using Formats = testing::Types<TsFormat, HlsFormat, FlvFormat, Mp4Format>;

struct FormatNames {
  template <typename Format>
  static std::string GetName(int /*index*/) {
    return Format::kName;
  }
};

// The path that a server records for a request for this address.
inline std::string PathOf(const std::string& url) {
  constexpr std::string_view kScheme = "http://";
  return url.substr(url.find('/', kScheme.size()));
}

template <typename Format>
class Conformance : protected RecordedStops, public Play<Format> {
 protected:
  using Record = RecordingPlayer::Record;

  Conformance() : RecordedStops(Format::Runs) {}

  static std::string StartLine(const std::string& url) {
    return std::string("PLAY ") + Format::kName + ":" + url;
  }
  static std::string OkLine(const std::string& url) { return Format::kOkLine + url; }
  static std::string RestartPrefix() { return std::string("PLAY ") + Format::kName + " RE:"; }
  static std::string PositionPrefix() {
    return std::string("PLAY ") + Format::kName + " StartPostion:";
  }
  static std::vector<std::string> ConsoleLinesOfAStop() {
    const std::string name = Format::kConsoleName;
    return {name + " EndDownload...\n", name + " video clear.\n", name + " audio clear.\n"};
  }

  bool WaitForFrames(const FrameCounts& counts) {
    return this->WaitForVideo(counts.video) && this->WaitForAudio(counts.audio);
  }

  // Stops, and checks that the stop was prompt.
  bool StopPromptly() {
    const bool was_running = this->Stop();
    EXPECT_FALSE(Format::Runs());
    EXPECT_TRUE(sleep_recorder_.WasPrompt(Format::kPace));
    return was_running;
  }

  // Plays a whole stream and does not stop. Returns when nothing more will be reported.
  void BeginAndPlayWhole(const std::string& name) {
    EXPECT_TRUE(this->downloader_.BeginDownload(this->server_.Whole(name)));
    EXPECT_TRUE(WaitForFrames(Format::kDue));
    EXPECT_TRUE(this->WaitForMessage(OkLine(this->server_.Whole(name))));
    EXPECT_TRUE(this->server_.WaitForWhole());
  }

  // Call it after a stop, so that only the next start is recorded.
  void StartAgain() {
    sleep_recorder_.Forget();
    this->player_.Reopen();
    this->player_.Forget();
  }

  // Plays a whole stream from its beginning and stops. `left_behind` is how many frames of an
  // earlier start may be delivered besides.
  void ExpectToPlayWhole(const std::string& name, const FrameCounts& due,
                         std::size_t left_behind = 0) {
    const std::string url = this->server_.Whole(name);
    sleep_recorder_.Forget();
    EXPECT_TRUE(this->downloader_.BeginDownload(url));
    EXPECT_TRUE(WaitForFrames(due));
    EXPECT_TRUE(this->WaitForMessage(OkLine(url)));
    EXPECT_TRUE(StopPromptly());
    const Record record = this->player_.Snapshot();
    EXPECT_EQ(record.messages.front(), StartLine(url));
    ExpectCount(record.video, due.video, left_behind);
    ExpectCount(record.audio, due.audio, left_behind);
  }

  static void ExpectCount(const std::vector<RecordedFrame>& frames, std::size_t due,
                          std::size_t left_behind) {
    EXPECT_THAT(frames.size(), testing::AllOf(testing::Ge(due), testing::Le(due + left_behind)));
    std::size_t steps_back = 0;
    for (std::size_t i = 1; i < frames.size(); ++i) {
      if (frames[i].pts < frames[i - 1].pts) ++steps_back;
    }
    EXPECT_LE(steps_back, left_behind) << "frames are out of order";
  }

  // Whether the parser has queued at least `due` frames since the start and all of them have been
  // taken off the queues.
  static bool AllAreTaken(const FrameCounts& due) {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->pushed >= due.video && g_audioQueue->pushed >= due.audio &&
           g_videoQueue->count == 0 && g_audioQueue->count == 0;
  }

  static bool HasQueued(std::size_t video) {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->count >= video;
  }
};

}  // namespace conformance

}  // namespace stream

#endif  // TESTS_CONFORMANCE_CONFORMANCE_H_
