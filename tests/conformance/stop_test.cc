// Stops at any time, with slow servers and players, and when nothing plays.
#include <array>
#include <future>
#include <memory>
#include <random>
#include <thread>

#include "tests/conformance/conformance.h"

namespace stream {

namespace conformance {
namespace {

template <typename Format>
class StopTest : public Conformance<Format> {
 protected:
  using Pipeline = typename Format::Pipeline;

  // Queues a frame of each kind, which no task removes.
  static void QueueFrames() {
    ResetFrameQueues();
    for (const bool is_video : {true, false}) {
      const std::uint8_t byte = 1;
      FrameRecord frame;
      ASSERT_EQ(CreateFrameNode(frame, 0, 0, &byte, 1, is_video, true), 0);
      const std::lock_guard lock(g_frameQueueMutex);
      ASSERT_EQ(PushFrame(frame, is_video ? g_videoQueue : g_audioQueue), 0);
    }
  }

  // Waits for a random moment of the stop: at once, or when a number of requests, video frames or
  // sleeps has been counted in this start. So a stop hits every stage of a start, however fast the
  // machine is.
  void WaitForRandomMoment(std::mt19937& random) {
    switch (random() % 4) {
      case 0:
        return;
      case 1:
        EXPECT_TRUE(this->server_.WaitForRequests(requests_ + 1 + random() % Format::kRequests));
        return;
      case 2:
        EXPECT_TRUE(this->WaitForVideo(1 + random() % 15));
        return;
      default:
        EXPECT_TRUE(this->sleep_recorder_.WaitForSleeps(sleeps_ + random() % 60));
    }
  }

  void BeginCounting() {
    requests_ = this->server_.Requests().size();
    sleeps_ = this->sleep_recorder_.Sleeps();
  }

  std::size_t requests_ = 0;
  std::size_t sleeps_ = 0;
};

TYPED_TEST_SUITE(StopTest, Formats, FormatNames);

TYPED_TEST(StopTest, PrintsItsLinesInOrderAndEmptiesTheQueues) {
  this->downloader_.BeginDownload(this->server_.Endless("a"));
  ASSERT_TRUE(this->WaitForVideo(3));
  testing::internal::CaptureStdout();
  EXPECT_TRUE(this->StopPromptly());
  const std::string console = testing::internal::GetCapturedStdout();
  std::size_t at = 0;
  for (const std::string& line : this->ConsoleLinesOfAStop()) {
    at = console.find(line, at);
    ASSERT_NE(at, std::string::npos) << line << "is missing in:\n" << console;
  }
  EXPECT_EQ(PopVideoFrame(), nullptr);
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

TYPED_TEST(StopTest, SecondStopReturnsFalseAndPrintsNothing) {
  this->downloader_.BeginDownload(this->server_.Whole("a"));
  EXPECT_TRUE(this->StopPromptly());
  testing::internal::CaptureStdout();
  EXPECT_FALSE(this->downloader_.EndDownload());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TYPED_TEST(StopTest, FacadeThatNeverPlayedReturnsFalse) {
  EXPECT_FALSE(this->downloader_.EndDownload());
  EXPECT_TRUE(this->player_.Snapshot().messages.empty());
}

TYPED_TEST(StopTest, PipelineThatIsNotRunningReturnsFalseAndPrintsNothing) {
  typename TestFixture::Pipeline pipeline(&this->player_);
  this->player_.Close();
  testing::internal::CaptureStdout();
  EXPECT_FALSE(pipeline.EndDownload());
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TYPED_TEST(StopTest, PipelineThatIsNotRunningLeavesTheQueuesUnchanged) {
  typename TestFixture::Pipeline pipeline(&this->player_);
  this->QueueFrames();
  EXPECT_FALSE(pipeline.EndDownload());
  EXPECT_NE(PopVideoFrame(), nullptr);
  EXPECT_NE(PopAudioFrame(), nullptr);
}

TYPED_TEST(StopTest, DropsQueuedFrames) {
  std::promise<void> release;
  const std::shared_future<void> released = release.get_future().share();
  this->player_.during_video = [released] { released.wait(); };
  this->downloader_.BeginDownload(this->server_.Whole("a"));
  EXPECT_TRUE(this->WaitForVideo(1));
  EXPECT_TRUE(WaitUntil([this] { return this->HasQueued(TypeParam::kDue.video - 1); }));
  auto ended = std::async(std::launch::async, [this] { return this->StopPromptly(); });
  EXPECT_TRUE(WaitUntil([] { return !TypeParam::Runs(); }));
  release.set_value();
  EXPECT_TRUE(ended.get());
  EXPECT_EQ(this->player_.Snapshot().video.size(), 1U);
  EXPECT_EQ(PopVideoFrame(), nullptr);
  EXPECT_EQ(PopAudioFrame(), nullptr);
}

// The server sends nothing until the end of the test, so only the stop can end the transfer.
TYPED_TEST(StopTest, DoesNotWaitForASilentServer) {
  this->downloader_.BeginDownload(this->server_.Silent("a"));
  ASSERT_TRUE(this->server_.WaitForRequests(1));
  EXPECT_TRUE(this->StopPromptly());
  EXPECT_EQ(this->server_.Requests().size(), 1U) << "a request was sent after the stop";
}

TYPED_TEST(StopTest, DoesNotWaitForAStalledServer) {
  this->downloader_.BeginDownload(this->server_.Gated("a"));
  ASSERT_TRUE(this->WaitForVideo(3));
  EXPECT_TRUE(this->StopPromptly());
}

TYPED_TEST(StopTest, StopRightAfterAStartLeavesNoTaskForTheNextStart) {
  for (int i = 0; i < 20; ++i) {
    this->downloader_.BeginDownload(this->server_.Endless("other"));
    this->downloader_.EndDownload();
  }
  this->StartAgain();
  this->ExpectToPlayWhole("a", TypeParam::kDueAgain, 1);
  EXPECT_EQ(this->server_.CountRequests(PathOf(this->server_.Whole("a"))), 1U);
}

TYPED_TEST(StopTest, HundredStopsAtRandomTimesFromAnotherThread) {
  constexpr std::size_t kStops = 100;
  std::mt19937 random(1);  // NOLINT: the same run every time
  const std::array urls = {this->server_.Endless("a"), this->server_.Endless("b")};
  std::size_t starts = 0;
  std::size_t restarts = 0;
  testing::internal::CaptureStdout();
  for (std::size_t i = 0; i < kStops; ++i) {
    this->StartAgain();
    this->sleep_recorder_.EndWaitsImmediately(random() % 2 == 0);
    this->downloader_.SetStartPostion(0);  // otherwise a finite stream would reach its end
    this->BeginCounting();
    this->downloader_.BeginDownload(urls.at(i / 2 % 2));
    std::thread stopper([&] {
      this->WaitForRandomMoment(random);
      EXPECT_TRUE(this->StopPromptly());
    });
    stopper.join();
    const RecordingPlayer::Record record = this->player_.Snapshot();
    starts += record.MessagesWith(this->StartLine("")).size();
    restarts += record.MessagesWith(this->RestartPrefix()).size();
  }
  testing::internal::GetCapturedStdout();
  EXPECT_EQ(starts, kStops);
  EXPECT_EQ(restarts, TypeParam::kRestartLines * kStops / 2);
}

TYPED_TEST(StopTest, DestructorOfTheFacadeStops) {
  {
    CStreamDownloader inner(&this->player_);
    inner.BeginDownload(this->server_.Endless("a"));
    ASSERT_TRUE(this->WaitForVideo(3));
  }
  this->player_.Close();
  EXPECT_FALSE(TypeParam::Runs());
  EXPECT_TRUE(this->sleep_recorder_.WasPrompt(TypeParam::kPace));
}

TYPED_TEST(StopTest, DestructorOfThePipelineStops) {
  {
    typename TestFixture::Pipeline pipeline(&this->player_);
    pipeline.BeginDownload(this->server_.Endless("a"));
    ASSERT_TRUE(this->WaitForVideo(3));
  }
  this->player_.Close();
  EXPECT_FALSE(TypeParam::Runs());
  EXPECT_TRUE(this->sleep_recorder_.WasPrompt(TypeParam::kPace));
}

TYPED_TEST(StopTest, DestructorOfAPipelineThatNeverPlayedPrintsNothing) {
  this->player_.Close();
  testing::internal::CaptureStdout();
  { const typename TestFixture::Pipeline pipeline(&this->player_); }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

TYPED_TEST(StopTest, DestructorOfAStoppedFacadePrintsNothing) {
  auto inner = std::make_unique<CStreamDownloader>(&this->player_);
  inner->BeginDownload(this->server_.Whole("a"));
  EXPECT_TRUE(inner->EndDownload());
  this->player_.Close();
  testing::internal::CaptureStdout();
  inner.reset();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

}  // namespace
}  // namespace conformance

}  // namespace stream
