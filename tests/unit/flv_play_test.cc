#include "flv/flv_play.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <future>
#include <mutex>

#include "tests/support/claimed_backlog.h"
#include "tests/support/flv_parse.h"
#include "tests/support/flv_tasks.h"
#include "tests/support/wait_until.h"

namespace {

using flv_test::Bytes;
using flv_test::MakeStream;
using flv_test::MakeStreamOfSize;
using testing::ElementsAre;

constexpr char kUrl[] = "http://host/a.flv";

class FlvPlayTest : public FlvTasks {
 protected:
  // Lets the play task run over bytes that are all there.
  std::string PlayAll(const Bytes& bytes) {
    Take(bytes);
    EndOfDownload();
    return CapturedPlay();
  }

  // The same while the download goes on.
  std::string PlayWithoutAnEnd(const Bytes& bytes) {
    Take(bytes);
    return CapturedPlay();
  }

  // The play task on a thread of its own, for as long as the test keeps it waiting.
  std::future<void> PlayAside() {
    return std::async(std::launch::async, [this] { Play(kUrl); });
  }

  std::string CapturedPlay() {
    testing::internal::CaptureStdout();
    Play(kUrl);
    return testing::internal::GetCapturedStdout();
  }

  bool HasReported(std::chrono::milliseconds limit) {
    return player_.WaitFor([](const auto& record) { return !record.messages.empty(); }, limit);
  }

  static constexpr std::chrono::milliseconds kNotYet{300};  // so long nothing may happen
  static constexpr std::chrono::milliseconds kSurely{20'000};
};

TEST_F(FlvPlayTest, WholeStreamIsReportedParsedAndReadOver) {
  const std::string console = PlayAll(MakeStream(5));
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV CACHE_NO OK:http://host/a.flv"));
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:FLV CACHE_NO OK:http://host/a.flv"));
  EXPECT_EQ(console, "headlength:9\nsssize:4\nppsize:3\nread over\n");
  const FrameDump dump = TakeQueuedFrames();
  EXPECT_EQ(dump.video.size(), 7U);
  EXPECT_EQ(dump.audio.size(), 5U);
  EXPECT_EQ(g_flvStream->DroppedSize(), 0U);
}

TEST_F(FlvPlayTest, WhatIsNoFlvFileIsReportedAndLeftAlone) {
  const std::string console = PlayAll(Bytes(100, 0x47));
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:http://host/a.flv"));
  EXPECT_THAT(player_.Snapshot().results, ElementsAre("PLAY:FLV NO:http://host/a.flv"));
  EXPECT_EQ(console, "not flv file\nReadHead Err\n");
}

TEST_F(FlvPlayTest, WhatIsNoFlvFileIsDroppedAndItsTransferGoesOn) {
  constexpr int kPieces = 500;
  constexpr std::uint64_t kSignatureBytes = 3;
  const Bytes piece(100'000, 0x47);
  EXPECT_EQ(PlayWithoutAnEnd(piece), "not flv file\nReadHead Err\n");
  for (int i = 0; i < kPieces; ++i) {
    ASSERT_EQ(Take(piece), piece.size());
    ASSERT_EQ(g_flvStream->UnreadSize(), 0U);
  }
  EXPECT_EQ(g_flvStream->DroppedSize(), (kPieces + 1) * piece.size() - kSignatureBytes);
}

TEST_F(FlvPlayTest, WhatFollowsAStreamThatIsReadOverIsDropped) {
  const Bytes stream = flv_test::Join({MakeStream(5), Bytes(200'000)});  // ends at an empty tag
  EXPECT_EQ(PlayWithoutAnEnd(stream), "headlength:9\nsssize:4\nppsize:3\nread over\n");
  EXPECT_EQ(Take(stream), stream.size());
  EXPECT_EQ(g_flvStream->UnreadSize(), 0U);
  EXPECT_GT(g_flvStream->DroppedSize(), stream.size());
  EXPECT_EQ(TakeQueuedFrames().video.size(), 7U);
}

TEST_F(FlvPlayTest, EmptyStreamIsReportedAsNone) {
  EXPECT_EQ(PlayAll({}), "ReadHead Err\n");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:http://host/a.flv"));
}

TEST_F(FlvPlayTest, HeaderAloneIsAStreamWithoutFrames) {
  EXPECT_EQ(PlayAll(flv_test::Header()), "headlength:9\nread over\n");
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV CACHE_NO OK:http://host/a.flv"));
}

TEST_F(FlvPlayTest, StreamOfThirteenBytesIsOneWithoutFrames) {
  const Bytes stream = flv_test::Join({flv_test::Header(), flv_test::LastBackPointer()});
  ASSERT_EQ(stream.size(), 13U);
  EXPECT_EQ(PlayAll(stream), "headlength:9\nread over\n");
  EXPECT_EQ(g_flvStream->DroppedSize(), 0U);
}

TEST_F(FlvPlayTest, WithoutAPlayerItIsParsedAllTheSame) {
  Take(MakeStream(5));
  EndOfDownload();
  Play(kUrl, PlayerPort());
  EXPECT_EQ(TakeQueuedFrames().video.size(), 7U);
}

TEST_F(FlvPlayTest, TenKibibytesDoNotWakeIt) {
  Take(MakeStreamOfSize(10240));
  const auto play = PlayAside();
  EXPECT_FALSE(HasReported(kNotYet));
  EXPECT_EQ(g_flvStream->UnreadSize(), 10240U);
  EndOfDownload();
  EXPECT_TRUE(HasReported(kSurely));
}

TEST_F(FlvPlayTest, OneByteMoreWakesIt) {
  const Bytes stream = MakeStreamOfSize(10241);
  const auto play = PlayAside();
  Take(Bytes(stream.begin(), stream.end() - 1));
  EXPECT_FALSE(HasReported(kNotYet));
  Take({stream.back()});
  EXPECT_TRUE(HasReported(kSurely));
  EndOfDownload();
}

TEST_F(FlvPlayTest, BytesThatCameBeforeItBeganToWaitStartIt) {
  Take(MakeStreamOfSize(10241));
  const auto play = PlayAside();
  EXPECT_TRUE(HasReported(kSurely));
  EndOfDownload();
}

TEST_F(FlvPlayTest, EndOfADownloadBeforeItBeganToWaitStartsIt) {
  EndOfDownload();
  Play(kUrl);
  EXPECT_TRUE(HasReported(kSurely));
}

TEST_F(FlvPlayTest, StopWakesIt) {
  const auto play = PlayAside();
  EXPECT_FALSE(HasReported(kNotYet));
  BeginToStop();
  EXPECT_TRUE(HasReported(kSurely));
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV NO:http://host/a.flv"));
}

TEST_F(FlvPlayTest, StopEndsTheTagLoopWithBytesLeft) {
  Take(MakeStream(5000, 10));
  const auto play = PlayAside();
  ASSERT_TRUE(HasReported(kSurely));
  BeginToStop();
  play.wait();
  EXPECT_GT(g_flvStream->DroppedSize(), 0U);
}

TEST_F(FlvPlayTest, StopEndsTheWaitForTheRestOfALongHeader) {
  Bytes start = flv_test::Header(Bytes(100'000));
  start.resize(50'000);
  Take(start);
  const auto play = PlayAside();
  ASSERT_TRUE(
      WaitUntil([] { return g_flvStream->UnreadSize() == 50'000 - flv_test::kHeaderSize; }));
  BeginToStop();
  play.wait();
  EXPECT_THAT(player_.Snapshot().messages, ElementsAre("PLAY FLV CACHE_NO OK:http://host/a.flv"));
}

TEST_F(FlvPlayTest, ParserWaitsUntilThereIsRoomForItsFrames) {
  const Bytes start = flv_test::Header();
  Take(start);
  auto play = PlayAside();
  ClaimTooManyBytes();
  Take(flv_test::Join({flv_test::NalTag(0, {{0x65, 1}}), flv_test::NalTag(40, {{0x41, 2}})}));
  EndOfDownload();
  EXPECT_TRUE(StillWaits(play));
  EXPECT_GT(g_flvStream->UnreadSize(), 0U) << "the second tag is not read yet";
  ClaimNothing();
  play.wait();
  EXPECT_EQ(g_videoQueue->pushed, 2U);
}

// The tag itself would hold the parser for ever, or for as long as its bytes come.
TEST_F(FlvPlayTest, StopEndsTheParserBetweenTwoNalUnitsOfATag) {
  constexpr std::size_t kNals = 1'000'000;
  Bytes units(4 * kNals);  // of no bytes each
  Take(flv_test::Join(
      {flv_test::Header(), flv_test::Tag(flv_test::kVideo, 0, flv_test::AvcBody(1, units))}));
  const auto play = PlayAside();
  ASSERT_TRUE(WaitUntil([] {
    const std::lock_guard lock(g_frameQueueMutex);
    return g_videoQueue->count > 0;
  }));
  BeginToStop();
  play.wait();
  EXPECT_LT(TakeQueuedFrames().video.size(), kNals);
}

TEST_F(FlvPlayTest, TagLoopPausesBehindEachTag) {
  constexpr int kTags = 200;
  std::vector<Bytes> parts = {flv_test::Header()};
  for (int i = 0; i < kTags; ++i) parts.push_back(flv_test::ScriptTag({2}));
  Take(flv_test::Join(parts));
  EndOfDownload();
  const auto before = std::chrono::steady_clock::now();
  Play(kUrl);
  EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(kTags));
}

// Keeps both kinds of lines in the order in which they come.
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

TEST_F(FlvPlayTest, MessageComesBeforeTheResult) {
  LinePlayer player;
  Take(MakeStream(1));
  EndOfDownload();
  Play("u", PlayerPort(&player));
  EXPECT_THAT(player.lines,
              ElementsAre("message PLAY FLV CACHE_NO OK:u", "result PLAY:FLV CACHE_NO OK:u"));
}

}  // namespace
