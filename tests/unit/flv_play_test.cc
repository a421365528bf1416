#include "flv/flv_play.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <mutex>

#include "tests/support/claimed_backlog.h"
#include "tests/support/flv_parse.h"
#include "tests/support/flv_tasks.h"
#include "tests/support/polling.h"
#include "tests/support/simulated_clock.h"
#include "tests/support/wait_until.h"

namespace stream {
namespace {

using flv_test::Bytes;
using flv_test::MakeStream;
using flv_test::MakeStreamOfSize;
using testing::ElementsAre;

constexpr char kUrl[] = "http://host/a.flv";

class FlvPlayTest : public FlvTasks {
 protected:
  // Runs the play task over a complete stream. Returns the console output.
  std::string PlayAll(const Bytes& bytes) {
    Receive(bytes);
    EndOfDownload();
    return CapturedPlay();
  }

  // The same while the download continues.
  std::string PlayWithoutAnEnd(const Bytes& bytes) {
    Receive(bytes);
    return CapturedPlay();
  }

  // Runs the play task on a thread of its own.
  std::future<void> PlayAside() {
    return std::async(std::launch::async, [this] { Play(kUrl); });
  }

  std::string CapturedPlay() {
    testing::internal::CaptureStdout();
    Play(kUrl);
    return testing::internal::GetCapturedStdout();
  }

  bool Reports() {
    return player_.WaitFor([](const auto& record) { return !record.messages.empty(); });
  }
};

// Runs the play task in simulated time on a thread of its own, which ends with the test.
class FlvPlayAsideTest : public FlvPlayTest {
 protected:
  ~FlvPlayAsideTest() override {
    BeginToStop();
    clock_.Release();
    if (play_.valid()) play_.wait();
  }

  void StartPlay() { play_ = PlayAside(); }
  // Waits for the end of the play task.
  void WaitForEnd() { play_.get(); }

  // Whether the task waits for the start of the stream: wakes it, and it must wait again.
  bool StillWaitsForTheBeginning() {
    if (!clock_.WaitForWaiters(1)) return false;
    const std::size_t checks = clock_.UnmetChecks();
    g_flvStream->Wake();  // only wakes the task, because the run flag is set
    return WaitUntil([&] { return clock_.UnmetChecks() > checks; }) && clock_.WaitForWaiters(1) &&
           player_.Snapshot().messages.empty();
  }

  static constexpr Clock::Duration kTagPace{1};

  SimulatedClock clock_;
  std::future<void> play_;
};

TEST_F(FlvPlayTest, WholeStreamIsReportedAndParsed) {
  const std::string console = PlayAll(MakeStream(5));
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV CACHE_NO OK:http://host/a.flv"));
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:FLV CACHE_NO OK:http://host/a.flv"));
  EXPECT_EQ(console, "headlength:9\nsssize:4\nppsize:3\nread over\n");
  const FrameDump dump = PopQueuedFrames();
  EXPECT_EQ(dump.video.size(), 7U);
  EXPECT_EQ(dump.audio.size(), 5U);
  EXPECT_EQ(g_flvStream->DroppedSize(), 0U);
}

TEST_F(FlvPlayTest, StreamThatIsNotFlvIsReportedAndNotParsed) {
  const std::string console = PlayAll(Bytes(100, 0x47));
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:http://host/a.flv"));
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:FLV NO:http://host/a.flv"));
  EXPECT_EQ(console, "not flv file\nReadHead Err\n");
}

TEST_F(FlvPlayTest, BytesOfAStreamThatIsNotFlvAreDroppedAndItsTransferContinues) {
  constexpr int kPieces = 500;
  constexpr std::uint64_t kSignatureBytes = 3;
  const Bytes piece(100'000, 0x47);
  EXPECT_EQ(PlayWithoutAnEnd(piece), "not flv file\nReadHead Err\n");
  for (int i = 0; i < kPieces; ++i) {
    ASSERT_EQ(Receive(piece), piece.size());
    ASSERT_EQ(g_flvStream->UnreadSize(), 0U);
  }
  EXPECT_EQ(g_flvStream->DroppedSize(), (kPieces + 1) * piece.size() - kSignatureBytes);
}

TEST_F(FlvPlayTest, BytesAfterTheEndOfTheParsingAreDropped) {
  const Bytes stream =
      flv_test::Join({MakeStream(5), Bytes(200'000)});  // parsing ends at a tag without a body
  EXPECT_EQ(PlayWithoutAnEnd(stream), "headlength:9\nsssize:4\nppsize:3\nread over\n");
  EXPECT_EQ(Receive(stream), stream.size());
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U);
  EXPECT_GT(g_flvStream->DroppedSize(), stream.size());
  EXPECT_EQ(PopQueuedFrames().video.size(), 7U);
}

TEST_F(FlvPlayTest, EmptyStreamIsReportedAsNotFlv) {
  EXPECT_EQ(PlayAll({}), "ReadHead Err\n");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:http://host/a.flv"));
}

TEST_F(FlvPlayTest, HeaderAloneIsAStreamWithoutFrames) {
  EXPECT_EQ(PlayAll(flv_test::Header()), "headlength:9\nread over\n");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV CACHE_NO OK:http://host/a.flv"));
}

TEST_F(FlvPlayTest, StreamOfThirteenBytesHasNoFrames) {
  const Bytes stream = flv_test::Join({flv_test::Header(), flv_test::LastBackPointer()});
  ASSERT_EQ(stream.size(), 13U);
  EXPECT_EQ(PlayAll(stream), "headlength:9\nread over\n");
  EXPECT_EQ(g_flvStream->DroppedSize(), 0U);
}

TEST_F(FlvPlayTest, StreamIsParsedWithoutAPlayer) {
  Receive(MakeStream(5));
  EndOfDownload();
  Play(kUrl, PlayerPort());
  EXPECT_EQ(PopQueuedFrames().video.size(), 7U);
}

TEST_F(FlvPlayAsideTest, TenKibibytesDoNotStartTheParser) {
  Receive(MakeStreamOfSize(10240));
  StartPlay();
  EXPECT_TRUE(StillWaitsForTheBeginning());
  EXPECT_EQ(g_flvStream->UnreadSize(), 10240U);
  EndOfDownload();
  EXPECT_TRUE(Reports());
}

TEST_F(FlvPlayAsideTest, OneByteMoreThanTenKibibytesStartsTheParser) {
  const Bytes stream = MakeStreamOfSize(10241);
  StartPlay();
  Receive(Bytes(stream.begin(), stream.end() - 1));
  EXPECT_TRUE(StillWaitsForTheBeginning());
  Receive({stream.back()});
  EXPECT_TRUE(Reports());
  EndOfDownload();
}

TEST_F(FlvPlayTest, BytesReceivedBeforeTheWaitStartTheParser) {
  Receive(MakeStreamOfSize(10241));
  const auto play = PlayAside();
  EXPECT_TRUE(Reports());
  EndOfDownload();
}

TEST_F(FlvPlayTest, EndOfTheDownloadBeforeTheWaitStartsTheParser) {
  EndOfDownload();
  Play(kUrl);
  EXPECT_TRUE(Reports());
}

TEST_F(FlvPlayAsideTest, StopEndsTheWaitForTheStream) {
  StartPlay();
  EXPECT_TRUE(StillWaitsForTheBeginning());
  BeginToStop();
  EXPECT_TRUE(Reports());
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:http://host/a.flv"));
}

TEST_F(FlvPlayAsideTest, StopEndsTheTagLoopWithBytesLeft) {
  Receive(MakeStream(5000, 10));
  StartPlay();
  ASSERT_TRUE(Reports() && clock_.WaitForWaiters(1));
  BeginToStop();
  clock_.Advance(kTagPace);
  WaitForEnd();
  EXPECT_GT(g_flvStream->DroppedSize(), 0U);
}

TEST_F(FlvPlayAsideTest, StopEndsTheWaitForTheRestOfALongHeader) {
  constexpr Clock::Duration kPoll{100};
  Bytes start = flv_test::Header(Bytes(100'000));
  start.resize(50'000);
  Receive(start);
  StartPlay();
  EXPECT_TRUE(StillPolls(clock_, kPoll));
  EXPECT_EQ(g_flvStream->UnreadSize(), 50'000 - flv_test::kHeaderSize);
  BeginToStop();
  clock_.Advance(kPoll);
  WaitForEnd();
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV CACHE_NO OK:http://host/a.flv"));
}

TEST_F(FlvPlayAsideTest, ParserWaitsForQueueSpace) {
  constexpr Clock::Duration kSpacePace{1};
  ClaimTooManyBytes();
  Receive(flv_test::Join(
      {flv_test::Header(), flv_test::NalTag(0, {{0x65, 1}}), flv_test::NalTag(40, {{0x41, 2}})}));
  EndOfDownload();
  StartPlay();
  EXPECT_TRUE(StillPolls(clock_, kSpacePace));
  EXPECT_GT(g_flvStream->UnreadSize(), 0U) << "the second tag was read although the queue is full";
  ClaimNothing();
  clock_.Release();
  WaitForEnd();
  EXPECT_EQ(g_videoQueue->pushed, 2U);
}

// Otherwise the tag would keep the parser busy for as long as bytes arrive.
TEST_F(FlvPlayTest, StopEndsTheParserBetweenTwoNalUnitsOfATag) {
  constexpr std::size_t kNals = 1'000'000;
  Bytes units(4 * kNals);  // empty NAL units
  Receive(flv_test::Join(
      {flv_test::Header(), flv_test::Tag(flv_test::kVideo, 0, flv_test::AvcBody(1, units))}));
  const auto play = PlayAside();
  ASSERT_TRUE(WaitUntil([] {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->count > 0;
  }));
  BeginToStop();
  play.wait();
  EXPECT_LT(PopQueuedFrames().video.size(), kNals);
}

TEST_F(FlvPlayAsideTest, TagLoopPausesAMillisecondAfterEachTag) {
  constexpr std::size_t kTags = 20;
  std::vector<Bytes> parts = {flv_test::Header()};
  for (std::size_t i = 0; i < kTags; ++i) parts.push_back(flv_test::ScriptTag({2}));
  const auto tag_size = static_cast<std::uint32_t>(parts.back().size());
  Receive(flv_test::Join(parts));
  EndOfDownload();
  StartPlay();
  for (std::size_t i = 1; i <= kTags; ++i) {
    ASSERT_TRUE(clock_.WaitForWaiters(1));
    EXPECT_EQ(g_flvStream->UnreadSize(), (kTags - i) * tag_size);
    EXPECT_EQ(clock_.Sleeps(kTagPace), i);
    clock_.Advance(kTagPace);
  }
  WaitForEnd();
  EXPECT_EQ(clock_.Elapsed(), kTagPace * kTags);
}

// Records messages and results in the order of the calls.
class LinePlayer final : public CStreamPlayerImp {
 public:
  void OnDuration(float) override {}
  void OnBufferedTime(float) override {}
  void OnAudioClock(float) override {}
  void OnAudioFrame(MediaFrame) override {}
  void OnVideoFrame(MediaFrame) override {}
  void OnMessage(std::string line) override { lines.push_back("message " + line); }
  void OnPlayResult(std::string line) override { lines.push_back("result " + line); }

  std::vector<std::string> lines;
};

TEST_F(FlvPlayTest, MessagePrecedesTheResult) {
  LinePlayer player;
  Receive(MakeStream(1));
  EndOfDownload();
  Play("u", PlayerPort(&player));
  EXPECT_THAT(player.lines,
              ElementsAre("message PLAY FLV CACHE_NO OK:u", "result PLAY:FLV CACHE_NO OK:u"));
}

}  // namespace
}  // namespace stream
